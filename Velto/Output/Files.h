#pragma once

#include "Platform/Value.h"

#include <stdexcept>
#include <string>
#include <string_view>

// Files as the commands read and write them.

namespace VeltoTouch::Velto {

// The reader of the standard output has gone; nobody wants the rest, and nobody is told.
struct ClosedPipe : std::exception {};

// The standard output cannot be written; told without the name of a file.
struct OutputFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The whole content of a file, or of the standard input for "-". Throws std::runtime_error with the system's
// words ("No such file or directory"), or "4 GiB or larger", which no reader takes.
[[nodiscard]] Ref<Data> readFile(const std::string& path);

// Whether the path of an output stands for the standard output.
[[nodiscard]] bool isStandardOutput(std::string_view path) noexcept;

// Writes a file that appears whole or not at all, and whose name lasts when this returns. One that is there keeps its
// owner, its group and its rights to read, write and run; where its owner cannot be kept and others may write to the
// folder, it stays. What is no regular file (a device, a pipe) and an open descriptor (/dev/stdout) are written to as
// they are; an empty path and "-" are the standard output.
// Throws std::runtime_error, mostly with the system's words; for the standard output see writeStandardOutput.
void writeFile(const std::string& path, std::string_view content);

// Throws what writeFile would throw before it writes: for a file that is to be written after long work.
void requireWritable(const std::string& path);

// Throws ClosedPipe when nobody reads it any more, OutputFailed("standard output: ...") otherwise.
void writeStandardOutput(std::string_view text);

} // namespace VeltoTouch::Velto
