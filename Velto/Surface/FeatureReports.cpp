#include "Velto/Surface/FeatureReports.h"

#include "Platform/Linux/ReportDescriptor.h"
#include "Velto/Surface/ReportDescriptor.h"

#include <algorithm>

namespace VeltoTouch::Surface {
namespace {

constexpr std::size_t kRoom = 512; // bytes; more than any of them declares

} // namespace

std::vector<FeatureReading> readFeatureReports(HIDDeviceBackend& device) {
    const ReportDescriptor descriptor(kReportDescriptor);
    std::vector<FeatureReading> readings;
    for (std::uint32_t number = 1; number <= ReportDescriptor::kHighestReportID; ++number) {
        const auto id = static_cast<std::uint8_t>(number);
        if (descriptor.reportLength(kIOHIDReportTypeFeature, id) == 0)
            continue;
        std::vector<std::uint8_t> bytes(kRoom);
        std::size_t length = 0;
        const bool isGiven = device.getReport(kIOHIDReportTypeFeature, id, bytes, length) == kIOReturnSuccess;
        bytes.resize(isGiven ? std::min(length, kRoom) : 0);
        readings.push_back({.id = id, .bytes = std::move(bytes)});
    }
    return readings;
}

} // namespace VeltoTouch::Surface
