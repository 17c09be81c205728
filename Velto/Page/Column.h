#pragma once

#include <cstdint>
#include <span>
#include <string>

// Columns of numbers as text that a page reads back exactly (Assets/columns.js): little-endian bytes, all first bytes
// before all second ones and so on, since bytes of one place resemble each other; deflated (zlib), in base64.
// Any thread. Throw std::runtime_error if the compressor fails.

namespace VeltoTouch::Page {

// As they are.
[[nodiscard]] std::string bytesColumn(std::span<const std::uint8_t> values);
[[nodiscard]] std::string floatsColumn(std::span<const float> values);

// Zigzag: small negative numbers become small ones.
[[nodiscard]] std::string integersColumn(std::span<const std::int32_t> values);

// Differences from the number before, which wrap; the first from 0.
[[nodiscard]] std::string countersColumn(std::span<const std::uint32_t> values); // zigzag
[[nodiscard]] std::string timesColumn(std::span<const std::uint64_t> values);

} // namespace VeltoTouch::Page
