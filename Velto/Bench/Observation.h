#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Bench/LiveRecognition.h"
#include "Velto/Host/HostTime.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string_view>

namespace VeltoTouch::Bench {

// What is known of a surface after a frame: plain values, to be shown now or again later.
struct Moment {
    enum class State : std::uint8_t { Idle, AboveNoise, Touching, Suppressed, Holding };

    struct Pad {
        std::int32_t value = 0; // the recognizer's, in counts
        bool isOn = false;
    };
    // A touch in progress.
    struct Contact {
        std::size_t number = 0; // from 1
        std::uint32_t elapsedMs = 0;
        PixelRegion region = PixelRegion::None;
        Analysis::Peak peak = {};
    };

    HostTime time{}; // since the first report
    InputReport::Image image{};
    bool isReset = false; // no image
    std::array<Pad, kPadCount> pads{};
    std::string_view strongestGroup; // of static lifetime
    std::int32_t groupValue = 0;
    bool isGroupOn = false;
    State state = State::Idle;
    float touchScore = 0;
    float touchScoreLimit = 0; // either way
    float holdScoreThreshold = 0;
    float activationThreshold = 0;
    std::uint32_t holdTimeoutMs = 0;
    std::optional<Contact> contact;

    // Counts until then.
    std::uint64_t reports = 0;
    std::uint32_t gaps = 0;
    std::uint32_t resets = 0;
    std::uint64_t invalidReports = 0;
};

// Recognizes a surface's reports as the service does, without one, and keeps what it needs to go back: the moments, the
// last touches, and the recording, bounded to `bound` frames as a service's recording is; 0: without a bound.
class Observation {
public:
    explicit Observation(std::uint64_t bound);

    // Takes in a write of a setting or a report, in the order of time. Ignores metadata.
    void add(Frame frame);

    // Moments are numbered from 0. Those before `firstKept` are forgotten.
    [[nodiscard]] std::size_t firstKept() const noexcept { return _forgotten; }
    [[nodiscard]] std::size_t end() const noexcept { return _forgotten + _moments.size(); }
    [[nodiscard]] const Moment& moment(std::size_t number) const { return _moments.at(number - _forgotten); }

    // A touch and the moment with which it ended.
    struct Decision {
        std::size_t moment;
        Analysis::Touch touch;
    };
    [[nodiscard]] const std::deque<Decision>& decisions() const noexcept { return _decisions; }

    // Returns the rate of the images up to a moment, over at most the second before it; nothing if there are too few.
    [[nodiscard]] std::optional<double> rateHz(std::size_t number) const;

    [[nodiscard]] PipelineRecording& recording() noexcept { return _recording; }

private:
    static constexpr std::size_t kMostDecisions = 10'000;

    void observe(const Analysis::Track::Step& step, std::span<const Gesture> gestures);
    void keep(const Moment& moment);
    [[nodiscard]] Moment momentAt(const Analysis::Track::Step& step) const;

    const std::uint64_t _bound;
    PipelineRecording _recording;
    LiveRecognition _recognition;
    Analysis::TouchObserver _observer{Analysis::TouchObserver::Contributions::Leave};
    std::uint64_t _reports = 0;
    std::uint64_t _startNs = 0; // of the first report
    std::uint64_t _lastNs = 0;

    std::deque<Moment> _moments;
    std::size_t _forgotten = 0;
    std::deque<Decision> _decisions;
};

} // namespace VeltoTouch::Bench
