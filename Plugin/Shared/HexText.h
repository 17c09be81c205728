#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Bytes as hexadecimal text, such as "01 f2 0a ". Any thread.

namespace VeltoTouch::Util {

// Reads hexadecimal numbers, a byte each, with white space between them. They are read as a stream reads unsigned
// 16-bit numbers in base 16: signs and the prefix 0x are taken, and reading ends quietly at the first token that is no
// such number (one above 0xFFFF is none). Throws std::invalid_argument("invalid hex string") for a number of 256 or
// more.
[[nodiscard]] std::vector<std::uint8_t> bytesFromHexString(std::string_view text);

// The same for the usual form alone, two digits and one blank a byte (the last blank may be missing): much faster.
// Empty for any other form.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> bytesFromHexPairs(std::string_view text);

// Returns each byte as two lower-case digits and one blank, the last one too. Running out of memory ends the process.
[[nodiscard]] std::string hexStringFromBytes(std::span<const std::uint8_t> bytes) noexcept;

// Appends the same to `text`.
void appendHexString(std::string& text, std::span<const std::uint8_t> bytes);

} // namespace VeltoTouch::Util
