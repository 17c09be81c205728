#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/Value.h"

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

// Files as the commands read and write them.

namespace VeltoTouch::Velto {

// The reader of the standard output is gone: the program ends without a message.
struct ClosedPipe : std::exception {};

// The standard output cannot be written; reported without a file's name.
struct OutputFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Returns the whole content of a file, or of the standard input for "-". Throws std::runtime_error with the system's
// message ("No such file or directory"), or "4 GiB or larger", which no reader takes.
[[nodiscard]] Ref<Data> readFile(const std::string& path);

// Handles each line of a file. A std::invalid_argument of the handler is thrown on with the line's number in brackets.
void forEachLine(const std::string& path, const std::function<void(std::string_view line)>& handle);

// Returns whether an output's path means the standard output.
[[nodiscard]] bool isStandardOutput(std::string_view path) noexcept;

// Writes a file that appears whole or not at all; its name is durable when this returns. An existing file keeps its
// owner, its group and its rights to read, write and run; if its owner cannot be kept and others may write to the
// folder, it is not replaced. Anything but a regular file (a device, a pipe) and an open descriptor (/dev/stdout) is
// written to directly; an empty path and "-" are the standard output. Throws std::runtime_error, mostly with the
// system's message; for the standard output see writeStandardOutput.
void writeFile(const std::string& path, std::string_view content);

// The same for a file that grows: returns it, open for writing. Throws std::runtime_error also for anything but a
// regular file.
[[nodiscard]] FileDescriptor beginFile(const std::string& path, std::string_view content);

// Throws what writeFile would throw before it writes. For a file that is written after long work.
void requireWritable(const std::string& path);

// Long texts are written in pieces of at least this size.
inline constexpr std::size_t kFlushedFrom = std::size_t{1} << 16U;

// Throws ClosedPipe if its reader is gone, OutputFailed("standard output: ...") for any other error.
void writeStandardOutput(std::string_view text);

} // namespace VeltoTouch::Velto
