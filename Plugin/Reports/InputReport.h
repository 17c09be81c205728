#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

// The controller's input reports. A report is a buffer that starts with its one-byte report ID; a record is
// the bytes that follow, one for one, all fields little-endian. The parsers take the report (ID first) and its
// length in bytes; they ignore bytes beyond the record and return nothing for a report that is too short or has
// another ID. With length 0 the pointer is not read. Any thread.

namespace VeltoTouch {

// Sensing pads. Pad i is named by the letter 'A' + i in every diagnostic.
constexpr std::size_t kPadCount = 15;

namespace InputReport {

// One scan of the pads.
struct Image {
    static constexpr std::uint8_t kReportID = 0x01;

    std::uint32_t frameNumber; // the device's scan counter; consecutive modulo 2^32
    std::uint32_t timestampMs; // time of the scan on the device's clock
    std::uint8_t reserved0;    // the reserved bytes are carried unchanged and not interpreted
    std::uint8_t reserved1;
    std::uint8_t reserved2;
    std::uint8_t reserved3;
    std::array<std::uint16_t, kPadCount> padRaw;   // shown by the image rendering alone
    std::array<std::int16_t, kPadCount> padSignal; // what recognition reads

    [[nodiscard]] static std::optional<Image> parse(const std::uint8_t* report, std::size_t length) noexcept;
};

// An event of the controller's firmware.
struct FirmwareEvent {
    static constexpr std::uint8_t kReportID = 0x02;
    static constexpr std::uint8_t kReset = 0; // the firmware has restarted
    // The vendor-defined event by which a host hears of it.
    static constexpr std::uint32_t kResetUsagePage = 0xFF60;
    static constexpr std::uint32_t kResetUsage = 2;

    std::uint8_t event; // kReset, or a code that is only passed on
    std::array<std::uint8_t, 8> context;

    [[nodiscard]] bool isReset() const noexcept { return event == kReset; }

    // The context as one number, first byte most significant, as logs and trace points show it.
    [[nodiscard]] std::uint64_t contextNumber() const noexcept;

    [[nodiscard]] static std::optional<FirmwareEvent> parse(const std::uint8_t* report, std::size_t length) noexcept;
};

// The shortest reports that hold a record, ID included.
constexpr std::size_t kImageReportLength = 1 + sizeof(Image);
constexpr std::size_t kFirmwareEventReportLength = 1 + sizeof(FirmwareEvent);

} // namespace InputReport
} // namespace VeltoTouch
