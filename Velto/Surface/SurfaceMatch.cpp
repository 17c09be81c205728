#include "Velto/Surface/SurfaceMatch.h"

#include "Velto/Surface/ReportDescriptor.h"

namespace VeltoTouch::Surface {
namespace {

bool hasReportsOf(const ReportDescriptor& wanted, const ReportDescriptor& descriptor, IOHIDReportType type) {
    for (std::uint32_t i = 0; i <= ReportDescriptor::kHighestReportID; ++i) { // from 0, for reports without an ID
        const auto reportID = static_cast<std::uint8_t>(i);
        const std::size_t length = wanted.reportLength(type, reportID);
        if (length != 0 && length != descriptor.reportLength(type, reportID))
            return false;
    }
    return true;
}

} // namespace

bool isSurface(const ReportDescriptor& descriptor) {
    static const auto& surface = *new ReportDescriptor(kReportDescriptor); // never destroyed
    return descriptor.primaryUsage() == surface.primaryUsage() &&
           hasReportsOf(surface, descriptor, kIOHIDReportTypeInput) &&
           hasReportsOf(surface, descriptor, kIOHIDReportTypeFeature);
}

} // namespace VeltoTouch::Surface
