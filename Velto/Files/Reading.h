#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/Value.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

// Files read as a whole. Any thread.

namespace VeltoTouch::Files {

inline constexpr std::size_t kChunk = std::size_t{1} << 20U; // a single read or write

// Throws std::invalid_argument("4 GiB or larger") for more than a parser can address.
void requireReadable(std::size_t size);

// Throws std::system_error.
[[nodiscard]] FileDescriptor openToRead(const std::string& path);

// Returns a file's size, kChunk for a pipe or a device, which do not know theirs. Throws std::system_error.
[[nodiscard]] std::size_t expectedSizeOf(const FileDescriptor& file);

// The next byte of a pipe, a socket or a file, which stays to be read. Waits for it. None at the end, and of what
// cannot be looked into, such as a terminal. Throws std::system_error.
[[nodiscard]] std::optional<char> nextByteOf(int descriptor);

// Returns all that can be read; `progress` is called with the size of what has been read. Throws std::system_error, and
// what `requireReadable` throws.
[[nodiscard]] Ref<Data> readAll(
    int descriptor, std::size_t expectedSize,
    const std::function<void(std::size_t size)>& progress = [](std::size_t) {});

} // namespace VeltoTouch::Files
