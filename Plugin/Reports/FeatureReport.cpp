#include "Plugin/Reports/FeatureReport.h"

#include <bit>
#include <cstring>

namespace VeltoTouch::FeatureReport {

std::optional<FactoryResetHoldDuration> FactoryResetHoldDuration::parse(const std::uint8_t* report,
                                                                        std::size_t length) noexcept {
    static_assert(std::endian::native == std::endian::little && sizeof(FactoryResetHoldDuration) == 4);
    FactoryResetHoldDuration record{};
    if (length < 1 + sizeof(record) || report[0] != kReportID)
        return std::nullopt;
    std::memcpy(&record, report + 1, sizeof(record));
    return record;
}

} // namespace VeltoTouch::FeatureReport
