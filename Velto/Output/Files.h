#pragma once

#include "Platform/Value.h"
#include "Velto/Files/Writing.h"

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

// Files as the commands read and write them: with "-" for the standard input and output.

namespace VeltoTouch::Velto {

// The reader of the standard output is gone: the program ends without a message.
struct ClosedPipe : std::exception {};

// The standard output cannot be written; reported without a file's name.
struct OutputFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Returns the whole content of a file, or of the standard input for "-"; its progress is shown. Throws
// std::system_error ("No such file or directory"), or std::invalid_argument("4 GiB or larger").
[[nodiscard]] Ref<Data> readFile(const std::string& path);

// Handles each line of a file. A std::invalid_argument of the handler is thrown on with the line's number in brackets.
void forEachLine(const std::string& path, const std::function<void(std::string_view line)>& handle);

// Returns whether an output's path means the standard output.
[[nodiscard]] bool isStandardOutput(std::string_view path) noexcept;

// Writes a file as Files::writeFile does; an empty path and "-" are the standard output, for which see
// writeStandardOutput.
void writeFile(const std::string& path, std::string_view content);

using Files::requireWritable;

// Long texts are written in pieces of at least this size.
inline constexpr std::size_t kFlushedFrom = std::size_t{1} << 16U;

// Throws ClosedPipe if its reader is gone, OutputFailed("standard output: ...") for any other error.
void writeStandardOutput(std::string_view text);

} // namespace VeltoTouch::Velto
