#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Linux/RunLoop.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace VeltoTouch::Surface {

// A device that plays reports at the pace of their times. Report i is due at
//
//   start + (time of report i - time of report 0) / speed
//
// so that delays do not add up: a late report is sent immediately and does not delay the next ones. The device is
// removed after the last report. If reports are stopped and started again, the next one is due immediately.
class PlayedDevice final : public HIDDeviceBackend {
public:
    struct TimedReport {
        std::uint64_t timestampNs;
        std::span<const std::uint8_t> bytes; // report ID first; valid until the source is asked again
    };
    // Returns the next report in the order of time, or nothing at the end. The run loop's thread.
    using Source = std::function<std::optional<TimedReport>()>;
    using FeatureReports = std::map<std::uint32_t, std::vector<std::uint8_t>>; // by ID, which they begin with

    // `speed` is a factor on the reports' own pace, above 0; infinity plays them as fast as it goes. Feature reports
    // that are not given are refused.
    PlayedDevice(Source source, double speed, Ref<Dictionary> properties, FeatureReports featureReports = {})
        : _source(std::move(source)), _speed(speed), _properties(std::move(properties)),
          _featureReports(std::move(featureReports)) {}

    [[nodiscard]] IOReturn open(IOOptionBits /*options*/) override { return kIOReturnSuccess; }
    void close(IOOptionBits /*options*/) override {}
    [[nodiscard]] RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) override;
    [[nodiscard]] IOReturn getReport(IOHIDReportType type, std::uint32_t reportID, std::span<std::uint8_t> buffer,
                                     std::size_t& length) override;
    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override { return _properties->value(key); }
    // Nothing of a played device can be set.
    [[nodiscard]] bool setProperty(const std::string& /*key*/, const Ref<Value>& /*value*/) override { return false; }

private:
    [[nodiscard]] std::optional<std::uint64_t> play(InputReportSink& sink);
    [[nodiscard]] std::uint64_t dueTime() const noexcept;

    // The thread of the run loop alone.
    const Source _source;
    const double _speed;
    std::optional<TimedReport> _next;
    std::uint64_t _startTime = 0; // host ticks
    std::uint64_t _firstTimestampNs = 0;
    bool _hasGone = false;

    const Ref<Dictionary> _properties;
    const FeatureReports _featureReports;
};

// What every surface of ours says of itself, under the platform's keys.
[[nodiscard]] Ref<Dictionary> surfaceProperties(std::string_view product, std::string_view serialNumber);

} // namespace VeltoTouch::Surface
