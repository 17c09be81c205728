#pragma once

#include "Platform/Value.h"

#include <string>
#include <string_view>

// Files, without the interpreter lock. Errors of the system are std::system_error.

namespace VeltoTouch::Python {

// Returns the whole content of a file. Throws std::invalid_argument for 4 GiB or more.
[[nodiscard]] Ref<Data> readFile(const std::string& path);

// Throws std::invalid_argument for 4 GiB or more, which no reader takes.
void requireReadable(std::size_t size);

// Writes a file that appears whole or not at all; an existing one keeps its rights. What is no file, such as a pipe, is
// written to directly.
void writeFile(const std::string& path, std::string_view content);

} // namespace VeltoTouch::Python
