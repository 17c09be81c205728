#pragma once

#include "Plugin/Reports/InputReport.h"
#include "Velto/Surface/Finger.h"
#include "Velto/Surface/Random.h"
#include "Velto/Surface/Step.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace VeltoTouch::Surface {

// The simulated controller: scans its pads at a fixed rate while fingers follow a script, and gives one input report
// after the other, for as long as the script has steps. The same options and steps give the same reports everywhere.
//
// The clocks start at fixed values and follow the count of scans, so that they never drift: host time in nanoseconds,
// device time in milliseconds (wraps), frame numbers (consecutive, wrap). A reset is one firmware event report in the
// place of a scan; after it device time and frame numbers start at 0, host time goes on.
//
// Nothing is allocated after construction but what the source of the steps allocates. One thread at a time.
class Simulation {
public:
    static constexpr std::uint32_t kHighestRateHz = 1000;
    static constexpr std::uint32_t kHighestNoise = 1000;
    static constexpr std::uint64_t kStartTimeNs = 100'000'000'000; // host time of the first scan
    static constexpr std::uint32_t kStartTimeMs = 10'000;          // device time of the first scan
    static constexpr std::uint32_t kStartFrame = 1;

    struct Options {
        std::uint64_t seed = 1;
        std::uint32_t rateHz = 100; // 1 to kHighestRateHz
        std::uint32_t noise = 3;    // largest deviation of a signal, in counts, up to kHighestNoise
    };

    // Returns the next step, or nothing at the script's end.
    using StepSource = std::function<std::optional<Step>()>;

    // The intended gesture of the contact that begins now.
    struct Label {
        std::string_view gesture;        // the name of a step's action (Step.h)
        std::string_view region;         // a region's name (Regions.h), "None" for a palm
        std::string_view endRegion = {}; // of a slide, otherwise empty
        std::uint32_t startMs = 0;       // device time of the contact's first scan
        std::uint32_t endMs = 0;         // device time of the first scan without it
    };

    struct Report {
        std::uint64_t timestampNs = 0; // host time
        std::array<std::uint8_t, InputReport::kImageReportLength> content{};
        std::size_t length = 0;
        std::optional<Label> label; // with the first report of a contact

        [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept { return std::span(content).first(length); }
    };

    // Throws std::invalid_argument for options out of range.
    Simulation(const Options& options, StepSource source);

    // Returns the next report, or nothing at the script's end, also when called again.
    [[nodiscard]] std::optional<Report> next();

private:
    [[nodiscard]] std::uint64_t scansIn(std::uint32_t durationMs) const noexcept;
    [[nodiscard]] std::uint32_t deviceTimeMs(std::uint64_t scan) const noexcept;
    void begin(const Step& step);
    [[nodiscard]] Report emptyReport();
    [[nodiscard]] Report resetReport();
    [[nodiscard]] Report imageReport();
    [[nodiscard]] std::int16_t noisySignal(double strength, std::size_t pad);

    Options _options;
    StepSource _source;
    Random _random;
    std::array<std::uint16_t, kPadCount> _baseline{}; // raw values of the untouched pads

    std::uint64_t _hostScan = 0;   // reports given
    std::uint64_t _deviceScan = 0; // images given since the device's start
    std::uint32_t _startTimeMs = kStartTimeMs;
    std::uint32_t _startFrame = kStartFrame;

    // The step in progress: a contact or nothing for some scans, then nothing for some more.
    std::optional<Gesture> _gesture;
    std::optional<Label> _label; // until the report that it comes with
    std::uint64_t _stepScan = 0;
    std::uint64_t _contactScans = 0;
    std::uint64_t _stepScans = 0;
};

// What a contact of this step is meant as. The step is one with a contact (no idle, no reset).
[[nodiscard]] Simulation::Label labelOf(const Step& step, std::uint32_t startMs, std::uint32_t endMs);

} // namespace VeltoTouch::Surface
