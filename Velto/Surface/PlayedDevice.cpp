#include "Velto/Surface/PlayedDevice.h"

#include "Platform/Clock.h"
#include "Platform/Linux/ReportDescriptor.h"
#include "Plugin/Shared/ClockConversion.h"
#include "Velto/Surface/ReportDescriptor.h"

#include <algorithm>

namespace VeltoTouch::Surface {
namespace {

constexpr double kLongestPauseNs = 1e18; // thirty years; far below what a host time holds

} // namespace

RunLoopSource PlayedDevice::startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) {
    if (_hasGone)
        return {};
    if (!_next)
        _next = _source();
    _startTime = mach_absolute_time();
    _firstTimestampNs = _next ? _next->timestampNs : 0;
    return loop.addTimer(mode, _startTime, [this, &sink] { return play(sink); });
}

std::optional<std::uint64_t> PlayedDevice::play(InputReportSink& sink) {
    if (_next) {
        const std::span<std::uint8_t> buffer = sink.buffer();
        std::ranges::copy(_next->bytes.first(std::min(_next->bytes.size(), buffer.size())), buffer.begin());
        sink.deliver(_next->bytes.size(), mach_absolute_time());
        _next = _source();
    }
    if (_next)
        return dueTime();
    _hasGone = true;
    removalHandler();
    return std::nullopt;
}

std::uint64_t PlayedDevice::dueTime() const noexcept {
    const double pauseNs = static_cast<double>(_next->timestampNs - _firstTimestampNs) / _speed;
    return _startTime + Util::machTimeFromNanoseconds(static_cast<std::uint64_t>(std::min(pauseNs, kLongestPauseNs)));
}

IOReturn PlayedDevice::getReport(IOHIDReportType type, std::uint32_t reportID, std::span<std::uint8_t> buffer,
                                 std::size_t& length) {
    const auto known = _featureReports.find(reportID);
    if (type != kIOHIDReportTypeFeature || known == _featureReports.end())
        return kIOReturnUnsupported;
    const std::vector<std::uint8_t>& report = known->second;
    length = report.size();
    std::ranges::copy(std::span(report).first(std::min(length, buffer.size())), buffer.begin());
    return kIOReturnSuccess;
}

Ref<Dictionary> surfaceProperties(std::string_view product, std::string_view serialNumber) {
    const auto text = [](std::string_view content) { return makeRef<String>(std::string(content)); };
    const auto number = [](std::uint64_t content) { return Number::withUnsignedLong(content); };
    const ReportDescriptor descriptor(kReportDescriptor);
    const ReportDescriptor::Usage usage = descriptor.primaryUsage().value();
    return makeRef<Dictionary>(std::vector<Dictionary::Entry>{
        {.key = "MaxInputReportSize", .value = number(descriptor.longestReport(kIOHIDReportTypeInput))},
        {.key = "PrimaryUsage", .value = number(usage.usage)},
        {.key = "PrimaryUsagePage", .value = number(usage.page)},
        {.key = "Product", .value = text(product)},
        {.key = "ProductID", .value = number(0)},
        {.key = "ReportDescriptor",
         .value = makeRef<Data>(std::string(kReportDescriptor.begin(), kReportDescriptor.end()))},
        {.key = "SerialNumber", .value = text(serialNumber)},
        {.key = "Transport", .value = text("Virtual")},
        {.key = "VendorID", .value = number(0)},
        {.key = "VersionNumber", .value = number(1)},
    });
}

} // namespace VeltoTouch::Surface
