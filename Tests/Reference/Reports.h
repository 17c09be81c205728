#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <vector>
namespace VeltoTouch::Reference {
using Bytes = std::vector<std::uint8_t>;
inline std::uint16_t read16(const Bytes& b, std::size_t at) { return std::uint16_t(b[at] + b[at + 1] * 256); }
inline std::uint32_t read32(const Bytes& b, std::size_t at) { return read16(b, at) + read16(b, at + 2) * 65536u; }
// The parsers take the whole report, ID first. Bytes beyond the record are ignored.
struct Image {
    std::uint32_t frameNumber = 0, timestampMs = 0;
    std::uint8_t reserved0 = 0, reserved1 = 0, reserved2 = 0, reserved3 = 0;
    std::array<std::uint16_t, 15> padRaw{};
    std::array<std::int16_t, 15> padSignal{};
    static std::optional<Image> parse(const Bytes& report) {
        if (report.size() < 73 || report[0] != 0x01)
            return std::nullopt;
        Image image{read32(report, 1), read32(report, 5), report[9], report[10], report[11], report[12], {}, {}};
        for (std::size_t pad = 0; pad < 15; ++pad) {
            image.padRaw[pad] = read16(report, 13 + 2 * pad);
            image.padSignal[pad] = std::int16_t(read16(report, 43 + 2 * pad));
        }
        return image;
    }
};

struct FirmwareEvent {
    std::uint8_t event = 0;
    std::array<std::uint8_t, 8> context{};
    static std::optional<FirmwareEvent> parse(const Bytes& r) {
        if (r.size() < 10 || r[0] != 0x02)
            return std::nullopt;
        return FirmwareEvent{r[1], {r[2], r[3], r[4], r[5], r[6], r[7], r[8], r[9]}};
    }
};
inline std::optional<std::uint32_t> parseFactoryResetHoldDuration(const Bytes& report) {
    if (report.size() < 5 || report[0] != 0x1F)
        return std::nullopt;
    return read32(report, 1);
}
} // namespace VeltoTouch::Reference
