#include "Velto/Surface/Simulation.h"

#include "Plugin/Reports/Regions.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace VeltoTouch::Surface {
namespace {

// What a finger needs to come back: long enough for every pad to fall below noise and for a touch to be over.
constexpr std::uint32_t kLiftedMs = 60;
constexpr std::uint64_t kLeastLiftedScans = 3;

constexpr std::int64_t kBaseline = 2000;
constexpr std::int64_t kBaselineSpread = 60;

// The time of a scan in a unit of which a second has `unitsPerSecond`, rounded down; exact for any count of scans.
constexpr std::uint64_t timeOfScan(std::uint64_t scan, std::uint32_t rateHz, std::uint64_t unitsPerSecond) noexcept {
    return scan / rateHz * unitsPerSecond + scan % rateHz * unitsPerSecond / rateHz;
}

// Rounds half away from zero.
constexpr std::int64_t rounded(double number) noexcept {
    return static_cast<std::int64_t>(number < 0.0 ? number - 0.5 : number + 0.5);
}

template <class Number>
constexpr Number saturated(std::int64_t number) noexcept {
    return static_cast<Number>(
        std::clamp<std::int64_t>(number, std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()));
}

template <class Record>
void setContent(Simulation::Report& report, const Record& record) noexcept {
    static_assert(1 + sizeof(Record) <= sizeof(report.content));
    report.content[0] = Record::kReportID;
    std::memcpy(report.content.data() + 1, &record, sizeof(record));
    report.length = 1 + sizeof(record);
}

const Simulation::Options& checked(const Simulation::Options& options) {
    if (options.rateHz == 0 || options.rateHz > Simulation::kHighestRateHz)
        throw std::invalid_argument("rate out of range");
    if (options.noise > Simulation::kHighestNoise)
        throw std::invalid_argument("noise out of range");
    return options;
}

} // namespace

Simulation::Simulation(const Options& options, StepSource source)
    : _options(checked(options)), _source(std::move(source)), _random(options.seed) {
    for (std::uint16_t& value : _baseline)
        value = static_cast<std::uint16_t>(kBaseline + _random.between(-kBaselineSpread, kBaselineSpread));
}

std::optional<Simulation::Report> Simulation::next() {
    while (_stepScan == _stepScans) {
        const auto step = _source();
        if (!step)
            return std::nullopt;
        if (step->action == Action::Reset)
            return resetReport();
        begin(*step);
    }
    return imageReport();
}

// At least one; a contact shorter than a scan is seen all the same.
std::uint64_t Simulation::scansIn(std::uint32_t durationMs) const noexcept {
    return std::max<std::uint64_t>(1, (std::uint64_t{durationMs} * _options.rateHz + 500) / 1000);
}

std::uint32_t Simulation::deviceTimeMs(std::uint64_t scan) const noexcept {
    return _startTimeMs + static_cast<std::uint32_t>(timeOfScan(scan, _options.rateHz, 1000)); // wraps
}

void Simulation::begin(const Step& step) {
    _stepScan = 0;
    if (step.action == Action::Idle) {
        _gesture.reset();
        _contactScans = 0;
        _stepScans = scansIn(step.durationMs);
        return;
    }
    _gesture.emplace(step, _random);
    _contactScans = scansIn(step.durationMs);
    _stepScans = _contactScans + std::max(kLeastLiftedScans, scansIn(kLiftedMs));
    _label = labelOf(step, deviceTimeMs(_deviceScan), deviceTimeMs(_deviceScan + _contactScans));
}

Simulation::Report Simulation::emptyReport() {
    Report report;
    report.timestampNs = kStartTimeNs + timeOfScan(_hostScan++, _options.rateHz, 1'000'000'000);
    return report;
}

Simulation::Report Simulation::resetReport() {
    Report report = emptyReport();
    setContent(report, InputReport::FirmwareEvent{.event = InputReport::FirmwareEvent::kReset, .context = {}});
    _deviceScan = 0;
    _startTimeMs = 0;
    _startFrame = 0;
    return report;
}

Simulation::Report Simulation::imageReport() {
    Strengths strengths{};
    if (_stepScan < _contactScans) {
        // The middle of the scan, so that a contact of one scan is seen at its height.
        const double scanMs = 1000.0 / _options.rateHz;
        strengths =
            _gesture->at((static_cast<double>(_stepScan) + 0.5) * scanMs, static_cast<double>(_contactScans) * scanMs);
    }
    ++_stepScan;

    Report report = emptyReport();
    report.label = std::exchange(_label, std::nullopt);
    InputReport::Image image{};
    image.frameNumber = _startFrame + static_cast<std::uint32_t>(_deviceScan); // wraps
    image.timestampMs = deviceTimeMs(_deviceScan++);
    for (std::uint8_t* reserved : {&image.reserved0, &image.reserved1, &image.reserved2, &image.reserved3})
        *reserved = static_cast<std::uint8_t>(_random.below(256));
    for (std::size_t pad = 0; pad < kPadCount; ++pad) {
        image.padSignal[pad] = noisySignal(strengths[pad], pad);
        image.padRaw[pad] = saturated<std::uint16_t>(_baseline[pad] + image.padSignal[pad]);
    }
    setContent(report, image);
    return report;
}

std::int16_t Simulation::noisySignal(double strength, std::size_t pad) {
    const std::int64_t noise = _random.between(-std::int64_t{_options.noise}, _options.noise);
    return saturated<std::int16_t>(rounded(strength * sensitivityOf(pad)) + noise);
}

Simulation::Label labelOf(const Step& step, std::uint32_t startMs, std::uint32_t endMs) {
    const bool isPalm = step.action == Action::Palm;
    const bool isSlide = step.action == Action::Slide;
    return {.gesture = nameOf(step.action),
            .region = nameOf(isPalm ? PixelRegion::None : regionOf(step.pad)),
            .endRegion = isSlide ? nameOf(regionOf(step.endPad)) : "",
            .startMs = startMs,
            .endMs = endMs};
}

} // namespace VeltoTouch::Surface
