#pragma once

#include "Platform/Value.h"

#include <stdexcept>
#include <string>
#include <string_view>

// Files as the commands read and write them.

namespace VeltoTouch::Tools {

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

// Writes a file that appears whole or not at all: beside its place, then renamed. What is no regular file (a
// device, a pipe, an open descriptor under /dev) is written directly; an empty path and "-" are the standard output.
// Throws std::runtime_error with the system's words; for the standard output see writeStandardOutput.
void writeFile(const std::string& path, std::string_view content);

// Throws, with the system's words, where it is plain beforehand that a file cannot be written: for who is to write it
// after long work.
void requireWritable(const std::string& path);

// Throws ClosedPipe when nobody reads it any more, OutputFailed("standard output: ...") otherwise.
void writeStandardOutput(std::string_view text);

} // namespace VeltoTouch::Tools
