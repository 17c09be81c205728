#include "Pipeline/Reports/FeatureReport.h"

#include <cstring>

namespace VeltoTouch::FeatureReport {

std::optional<FactoryResetHoldDuration> FactoryResetHoldDuration::parse(const std::uint8_t* report,
                                                                        std::size_t length) noexcept {
    FactoryResetHoldDuration record{};
    if (length < 1 + sizeof(record) || report[0] != kReportID)
        return std::nullopt;
    std::memcpy(&record, report + 1, sizeof(record));
    return record;
}

} // namespace VeltoTouch::FeatureReport
