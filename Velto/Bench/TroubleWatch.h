#pragma once

#include "Plugin/Recording/Frame.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Bench/LiveRecognition.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

namespace VeltoTouch::Bench {

// What interrupts the images or a touch: a touch that the recognizer decided to cancel, a gap in the frame numbers, a
// reset of the controller's firmware, a report that is neither image nor firmware event.
enum class Trouble : std::uint8_t { Cancel, Gap, Reset, Invalid };
inline constexpr std::array<std::string_view, 4> kTroubleNames{"cancel", nameOf(Disturbance::Kind::Gap),
                                                               nameOf(Disturbance::Kind::Reset),
                                                               nameOf(Disturbance::Kind::InvalidReport)};
[[nodiscard]] constexpr std::string_view nameOf(Trouble trouble) noexcept {
    return kTroubleNames[static_cast<std::size_t>(trouble)];
}

// Plays frames, as they come, through a recognizer of its own and finds their trouble and their touches. One thread.
class TroubleWatch {
public:
    // `troubleHandler` is called within `handle`, and must not throw.
    explicit TroubleWatch(std::function<void(Trouble trouble)> troubleHandler)
        : _troubleHandler(std::move(troubleHandler)) {}

    // Takes in a frame, in the order of time.
    void handle(const Frame& frame);

    // Whether a touch is in progress after the newest frame, or ended with it.
    [[nodiscard]] bool isTouched() const noexcept { return _observer.inProgress() != nullptr || _ended; }
    // Whether there is no such touch, and nothing above noise.
    [[nodiscard]] bool isClear() const noexcept { return !isTouched() && !_recognition.algs().handStats.aboveNoise; }
    // The touch that ended with the newest frame; null if none did.
    [[nodiscard]] const Analysis::Touch* endedTouch() const noexcept { return _ended ? &*_ended : nullptr; }

    // Returns how often it happened.
    [[nodiscard]] std::uint64_t count(Trouble trouble) const noexcept {
        return _counts[static_cast<std::size_t>(trouble)];
    }

private:
    void add(Trouble trouble);

    const std::function<void(Trouble trouble)> _troubleHandler;
    std::array<std::uint64_t, kTroubleNames.size()> _counts{};
    LiveRecognition _recognition;
    Analysis::TouchObserver _observer{Analysis::TouchObserver::Contributions::Leave};
    std::optional<Analysis::Touch> _ended;
};

} // namespace VeltoTouch::Bench
