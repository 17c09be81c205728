#pragma once

#include "Plugin/Reports/InputReport.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Small functions that several rooms share. None keeps state but the clock's timebase; any thread may call
// any of them. An allocation failure in what is noexcept ends the process.

namespace VeltoTouch::Util {

// Host clock ticks and nanoseconds. The timebase is fetched once, on the first call of either. Products wrap at
// 2^64 before the division, which truncates.
[[nodiscard]] std::uint64_t machTimeFromNanoseconds(std::uint64_t nanoseconds) noexcept;
[[nodiscard]] std::uint64_t nanosecondsFromMachTime(std::uint64_t ticks) noexcept;

// time * multiplier / divisor, the product wrapping at 2^64; 0 where the divisor is 0.
[[nodiscard]] constexpr std::uint64_t scaledTime(std::uint64_t time, std::uint32_t multiplier,
                                                 std::uint32_t divisor) noexcept {
    return divisor == 0 ? 0 : time * multiplier / divisor;
}

// Bytes written as hexadecimal numbers with white space between them, read as a stream of unsigned 16-bit numbers
// in base 16: reading ends quietly at the first token that is no such number (a number above 0xFFFF is none).
// Throws std::invalid_argument("invalid hex string") for a number of 256 or more.
[[nodiscard]] std::vector<std::uint8_t> bytesFromHexString(std::string_view text);

// The same for the usual form alone, two digits and one blank a byte (the last blank may be missing): much faster.
// Nothing for any other form.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> bytesFromHexPairs(std::string_view text);

// Each byte as two lower-case digits and one blank, the last one too.
[[nodiscard]] std::string hexStringFromBytes(std::span<const std::uint8_t> bytes) noexcept;

// The same appended to `text`.
void appendHexString(std::string& text, std::span<const std::uint8_t> bytes);

// Removes `domain` and the dot behind it from the front of `key`; false, and `key` unchanged, where the key does
// not begin with them. The rest may be empty. Case counts.
bool stripDomainFromKey(std::string& key, std::string_view domain) noexcept;

// The picture of an image: a header line with frame number and time, an empty line, and thirteen lines with
// each pad's value where the pad lies. `raw` shows the unsigned raw values in place of the signals.
[[nodiscard]] std::string stringFromImage(const InputReport::Image& image, bool raw) noexcept;

} // namespace VeltoTouch::Util
