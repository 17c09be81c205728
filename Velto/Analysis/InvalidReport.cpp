#include "Velto/Analysis/InvalidReport.h"

#include "Plugin/Reports/InputReport.h"

#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Analysis {

std::string faultOf(std::span<const std::uint8_t> report) {
    if (report.empty())
        return "empty report";
    const auto tooShort = [&report](std::string_view what, std::size_t least) {
        return fmt::format("{} with {} of {} bytes", what, report.size(), least);
    };
    switch (report.front()) {
    case InputReport::Image::kReportID:
        return tooShort("image report", InputReport::kImageReportLength);
    case InputReport::FirmwareEvent::kReportID:
        return tooShort("firmware event report", InputReport::kFirmwareEventReportLength);
    default:
        return fmt::format("unknown report ID 0x{:02x} (length {})", report.front(), report.size());
    }
}

} // namespace VeltoTouch::Analysis
