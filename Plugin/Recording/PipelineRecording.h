#pragma once

#include "Plugin/Pipeline/PipelineInterfaces.h"
#include "Plugin/Recording/Frame.h"
#include "Plugin/Recording/FrameList.h"
#include "Plugin/Recording/Player.h"

#include <cstdint>
#include <list>
#include <memory>
#include <utility>

namespace VeltoTouch {

// The bound of the recording that a service keeps: its reports and metadata frames. Settings come on top.
constexpr std::uint64_t kMaxRecordedFrames = 4350;

// Stands in front of a pipeline: stores every call as a frame, then forwards it unchanged. The frames are bounded
// by trimming, which keeps the newest reports and the settings in force before them, so that a recording taken at
// any moment can be replayed from a consistent state. The same object plays its frames into its target.
//
// No lock of its own: the service calls and copies it under its `_pipelineLock`. Nothing throws but reading, copying
// and `playNextFrame`: elsewhere, running out of memory ends the process.
class PipelineRecording final : public PipelineInput {
public:
    // Has no frames, no target, no bound and no playback.
    PipelineRecording() = default;

    // Reads a container of any known version, see readContainer; frames in file order. Throws what it throws, and
    // std::invalid_argument("json not supplied") for null.
    explicit PipelineRecording(const Data* container);

    // Has these frames, in their order.
    explicit PipelineRecording(std::list<Frame> frames) noexcept : _frames(std::move(frames)) {}

    // A copy has a list of its own, the same target and bound, and no playback. A move leaves no frames behind.
    PipelineRecording(const PipelineRecording& other) = default;
    PipelineRecording& operator=(const PipelineRecording& other) = default;
    PipelineRecording(PipelineRecording&& other) noexcept = default;
    PipelineRecording& operator=(PipelineRecording&& other) noexcept = default;
    ~PipelineRecording() = default;

    // Store the call as a frame, then make the same call on `pipeline` if there is one. `timestamp` is in host ticks.
    void setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept override;
    void handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) noexcept override;
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept override;

    // Adds a frame at the end, trims the list when it holds twice the bound (all kinds counted) and ends a playback.
    // Every distinct key keeps a settings frame: with more keys than the bound, every append beyond twice
    // the bound is a pass over the whole list.
    void appendFrame(Frame frame) noexcept;

    // Trim and sort a list, see takeSurplus and sortByTime.
    static void trimFrames(std::list<Frame>& frames, std::uint64_t maxFrameCount) noexcept;
    static void sortFrames(std::list<Frame>& frames) noexcept;

    // The same on the recording itself. A playback goes on unless the frame at its position is taken out.
    void trimFrames(std::uint64_t maxFrameCount) noexcept;
    void sortFrames() noexcept;

    // Bounds the frames that are no settings, at once and from now on; 0 removes the bound and trims nothing.
    void setMaxFrameCount(std::uint64_t count) noexcept;

    // Play the frames into `pipeline`, see Player: `playReset` goes to the first, `playNextFrame` waits and plays one.
    // Played frames are not recorded, and nothing may be recorded meanwhile.
    void playReset() noexcept { _play.start(frames()); }
    [[nodiscard]] bool playCanContinue() const noexcept { return _play.next() != nullptr; }
    void playNextFrame(float speed) { _play.playNext(speed, pipeline.get()); }
    // The host time of the last `playReset`, in ticks.
    [[nodiscard]] std::uint64_t playStartTime() const noexcept { return _play.startTime(); }

    // Returns the recording as a container of the current version, compact JSON. Trims it to its bound and sorts it
    // first, which changes the recording itself.
    [[nodiscard]] Ref<Data> json() noexcept;

    // Brings a parsed container to the current version, see migrateContainer.
    [[nodiscard]] static Ref<Value> migrateSerializedContainer(const Ref<Value>& container);

    [[nodiscard]] const std::list<Frame>& frames() const noexcept { return _frames.frames(); }

    std::shared_ptr<PipelineInput> pipeline; // target of forwarding and playback; may be empty

private:
    friend class RecordingCopy;

    FrameList _frames;
    Player _play; // of _frames
};

} // namespace VeltoTouch
