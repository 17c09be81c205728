#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

// The controller's one feature report that has a record. Layout and parse rules are those of the input reports.

namespace VeltoTouch::FeatureReport {

struct FactoryResetHoldDuration {
    static constexpr std::uint8_t kReportID = 0x1F;

    std::uint32_t holdDuration; // in the device's own unit; handed to the host unchanged

    [[nodiscard]] static std::optional<FactoryResetHoldDuration> parse(const std::uint8_t* report,
                                                                       std::size_t length) noexcept;
};

} // namespace VeltoTouch::FeatureReport
