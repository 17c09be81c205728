#pragma once

#include "Plugin/Pipeline/PipelineInterfaces.h"
#include "Plugin/Recording/Frame.h"

#include <cstdint>
#include <list>
#include <optional>

namespace VeltoTouch {

// Plays a list of frames into a pipeline, one after the other, with the recorded spacing in time. It has a position in
// the list, before a frame or behind the last, or none. While it has one, the list must live, and the next frame must
// stay in it.
//
// No lock; plays on the caller's thread.
class Player {
public:
    Player() = default;
    // Copies and moves have no position, and what is moved from loses its own: the list is another's.
    Player(const Player& /*other*/) noexcept {}
    Player& operator=(const Player& other) noexcept;
    Player(Player&& other) noexcept { other.clear(); }
    Player& operator=(Player&& other) noexcept;
    ~Player() = default;

    // Goes to the first frame of `frames` and notes the host time.
    void start(const std::list<Frame>& frames) noexcept;
    // Gives the position up; the start time stays.
    void stop() noexcept { _frames = nullptr; }

    // The frame that is played next; null at the end and without a position.
    [[nodiscard]] const Frame* next() const noexcept;

    // Plays the next frame: waits as long as the recording did, divided by `speed` (not greater than 0, NaN included,
    // means 1), and hands it to `target`, which may be null. Its timestamp is the host time of `start` plus the frame's
    // distance from the list's first, whatever the speed; for an earlier frame than the first it wraps.
    // Throws std::runtime_error("playback finished") if there is no next frame.
    void playNext(float speed, PipelineInput* target);

    // Hands a frame to `target` at the host time that is its own.
    static void play(const Frame& frame, PipelineInput& target);

    // The host time of the last `start`, in ticks.
    [[nodiscard]] std::uint64_t startTime() const noexcept { return _startTimeMach; }

    // The microseconds to wait between two frames of these times: single precision, truncated; 0 for a later `fromNs`.
    [[nodiscard]] static std::uint64_t pauseUs(std::uint64_t fromNs, std::uint64_t toNs, float speed) noexcept;

private:
    void clear() noexcept;

    const std::list<Frame>* _frames = nullptr; // null: no position
    std::list<Frame>::const_iterator _next;
    std::uint64_t _startTimeMach = 0;
    std::optional<std::uint64_t> _lastFrameTimeNs; // of the frame that was played last
};

} // namespace VeltoTouch
