#pragma once

#include "Platform/Object.h"

#include <array>
#include <string_view>

// Universally unique identifiers: 16 bytes, written as 8-4-4-4-12 hexadecimal digits.

namespace VeltoTouch {

using CFUUIDBytes = std::array<std::uint8_t, 16>;

class UUID final : public Object {
public:
    explicit UUID(const CFUUIDBytes& bytes) noexcept : _bytes(bytes) {}

    [[nodiscard]] const CFUUIDBytes& bytes() const noexcept { return _bytes; }

private:
    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;

    const CFUUIDBytes _bytes;
};

using CFUUIDRef = const UUID*;

// Returns the one UUID object of these bytes, which is never destroyed and not to be released. Any thread.
[[nodiscard]] CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFTypeRef allocator, const CFUUIDBytes& bytes);

[[nodiscard]] Ref<UUID> CFUUIDCreateFromUUIDBytes(CFTypeRef allocator, const CFUUIDBytes& bytes);

// Reads the written form in upper or lower case. Returns null for any other text.
[[nodiscard]] Ref<UUID> CFUUIDCreateFromString(CFTypeRef allocator, std::string_view text);

} // namespace VeltoTouch
