#include "Velto/Surface/SurfaceMatch.h"

#include "Velto/Surface/ReportDescriptor.h"

namespace VeltoTouch::Surface {
namespace {

constexpr unsigned kReportIDs = 256; // 0, for reports without one, included

bool hasReportsOf(const ReportDescriptor& wanted, const ReportDescriptor& descriptor, IOHIDReportType type) {
    for (unsigned i = 0; i < kReportIDs; ++i) {
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
