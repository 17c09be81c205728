#pragma once

#include "Plugin/Pipeline/PipelineInterfaces.h"
#include "Plugin/Recording/Frame.h"

#include <cstdint>
#include <list>
#include <memory>
#include <optional>

namespace VeltoTouch {

// The bound of the recording that a service keeps: its reports and metadata frames. Settings come on top.
constexpr std::uint64_t kMaxRecordedFrames = 4350;

// Stands in front of a pipeline: stores every call as a frame, then forwards it unchanged. The frames are bounded
// by trimming, which keeps the newest reports and the settings in force before them, so that a recording taken at
// any moment can be replayed from a consistent state. The same object plays its frames into its target.
//
// No lock of its own: the service calls and copies it under its `_pipelineLock`. Recording, trimming and writing never
// fail towards their caller: an allocation failure ends the process.
class PipelineRecording final : public PipelineInput {
public:
    PipelineRecording() = default;

    // Reads a container of any known version (frames in file order, no target, no bound, playback invalid).
    // Throws std::invalid_argument with what is wrong, std::runtime_error("migrateSerializedContainer failed: ...")
    // for a container that cannot be brought to the current version (text that is no JSON included), and
    // std::invalid_argument("json not supplied") for null. What is thrown carries the place of the damage if it is
    // known; see placeOf.
    explicit PipelineRecording(const Data* container);

    // A copy has its own list, the same target and bound, and no playback.
    PipelineRecording(const PipelineRecording& other);
    PipelineRecording& operator=(const PipelineRecording& other);
    PipelineRecording(PipelineRecording&& other) noexcept;
    PipelineRecording& operator=(PipelineRecording&& other) noexcept;
    ~PipelineRecording() = default;

    void setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept override;
    void handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) noexcept override;
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept override;

    // Adds a frame at the end, trims the list when it holds twice the bound (all kinds counted) and ends a playback.
    // Every distinct key keeps a settings frame: with more keys than the bound, every append beyond twice
    // the bound is a pass over the whole list.
    void appendFrame(Frame frame) noexcept;

    // Keeps the newest `maxFrameCount` frames that are no settings, between two of them (and after the newest) the
    // newest setting of each key, and before the oldest of them the newest setting of each key of all that went
    // before. Order stays. With 0, one setting per key stays.
    static void trimFrames(std::list<Frame>& frames, std::uint64_t maxFrameCount) noexcept;

    // Stable, by time.
    static void sortFrames(std::list<Frame>& frames) noexcept;

    // The same two on the recording itself. A playback goes on unless the frame at its position is taken out.
    void trimFrames(std::uint64_t maxFrameCount) noexcept;
    void sortFrames() noexcept;

    // Bounds the frames that are no settings, at once and from now on; 0 removes the bound and trims nothing.
    void setMaxFrameCount(std::uint64_t count) noexcept;

    // Playback. `playReset` goes to the first frame; `playNextFrame` waits as long as the record did, divided by
    // `speed` (not greater than 0, NaN included, means 1), then hands one frame to the target on the calling thread,
    // stamped by the record whatever the speed: host time of `playReset` plus the frame's distance from the
    // first frame. Played frames are not recorded. Throws std::runtime_error("playback finished") at the end
    // and where there is no valid position.
    void playReset() noexcept;
    [[nodiscard]] bool playCanContinue() const noexcept;
    void playNextFrame(float speed);

    // The host time of the last `playReset`, in ticks.
    [[nodiscard]] std::uint64_t playStartTime() const noexcept { return _play.startTimeMach; }

    // The microseconds to wait between two frames of these times: single precision, truncated.
    [[nodiscard]] static std::uint64_t playbackPauseUs(std::uint64_t fromNs, std::uint64_t toNs, float speed) noexcept;

    // The recording as a container of the current version: trimmed to the bound and sorted, which changes
    // the recording itself, then written as compact JSON.
    [[nodiscard]] Ref<Data> json() noexcept;

    // Brings a parsed container (nil for text that is no JSON) to the current version. Checks only what it renames;
    // throws std::invalid_argument, for a frame with its place. A container of the current version is returned itself.
    [[nodiscard]] static Ref<Value> migrateSerializedContainer(const Ref<Value>& container);

    [[nodiscard]] const std::list<Frame>& frames() const noexcept { return _frames; }

    std::shared_ptr<PipelineInput> pipeline; // target of forwarding and playback; may be empty

private:
    friend class RecordingCopy;

    struct Play {
        bool valid = false;
        std::list<Frame>::const_iterator iterator; // next frame to play
        std::uint64_t startTimeMach = 0;           // host ticks of playReset
        std::optional<std::uint64_t> lastFrameTimeNs;
    };

    // Takes out of the list what trimming removes, and returns it.
    [[nodiscard]] static std::list<Frame> takeSurplus(std::list<Frame>& frames, std::uint64_t maxFrameCount);
    // A list of one frame, whose memory is a spare frame's where there is one.
    [[nodiscard]] std::list<Frame> takeNode();
    void appendNode(std::list<Frame>& node) noexcept;
    // The frame that would be played next, or null.
    [[nodiscard]] const Frame* nextFrame() const noexcept;

    std::list<Frame> _frames;         // oldest first
    std::list<Frame> _spareFrames;    // reports without key and value; only their memory counts, for frames to come
    std::uint64_t _maxFrameCount = 0; // 0: unbounded
    std::uint64_t _generation = 0;    // changes when frames are taken out or put in another order
    Play _play;
};

} // namespace VeltoTouch
