#pragma once

#include "Platform/HIDDevice.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

namespace VeltoTouch {

// Reads from a HID report descriptor what the device is and how long its reports are.
//
// The descriptor is a row of items, each a tag with up to four bytes. A main item that declares a field of a report
// (`Input`, `Output`, `Feature`) adds "report size" times "report count" bits to the report with the current ID; the
// sizes and the ID are global state, which stays until it is changed and can be put on a stack. Usages are local
// state, which ends with the next main item.
class ReportDescriptor {
public:
    static constexpr std::uint32_t kHighestReportID = 0xFF;

    struct Usage {
        std::uint16_t page;
        std::uint16_t usage;

        friend bool operator==(const Usage&, const Usage&) = default;
    };

    // Takes any bytes: the descriptor ends at the first item that cannot be read.
    explicit ReportDescriptor(std::span<const std::uint8_t> bytes);

    // Returns the first usage of the first collection; none if there is no collection or it has no usage.
    [[nodiscard]] std::optional<Usage> primaryUsage() const noexcept { return _primaryUsage; }

    // Returns the length of a report in bytes, the ID included if there is one; 0 if the report is not declared.
    // Reports of a device without IDs are found under 0.
    [[nodiscard]] std::size_t reportLength(IOHIDReportType type, std::uint8_t reportID) const noexcept;

    // Returns the length of the longest report of a type; 0 if there is none.
    [[nodiscard]] std::size_t longestReport(IOHIDReportType type) const noexcept;

private:
    class Parser;
    using ReportBits = std::map<std::uint8_t, std::uint64_t>; // by report ID

    [[nodiscard]] std::size_t lengthInBytes(std::uint64_t bits) const noexcept;

    std::optional<Usage> _primaryUsage;
    bool _hasReportIDs = false;
    std::array<ReportBits, 3> _bits; // by IOHIDReportType
};

// Returns the report descriptor of the hidraw node with this folder below /sys (or a link to it, such as
// /sys/class/hidraw/hidraw0); nothing if it cannot be read. Does not wait for a udevd: its rules may call this.
[[nodiscard]] std::optional<ReportDescriptor> readReportDescriptor(const std::string& folder);

} // namespace VeltoTouch
