#pragma once

#include "Platform/FileDescriptor.h"

#include <string>
#include <string_view>

// Files that appear whole or not at all. Any thread.

namespace VeltoTouch::Files {

// Writes a file that appears whole or not at all; its name is durable when this returns. An existing file keeps its
// owner, its group and its rights to read, write and run; if its owner cannot be kept and others may write to the
// folder, it is not replaced. Anything but a regular file (a device, a pipe) and an open descriptor (/dev/stdout) is
// written to directly. Throws std::system_error for what the system refuses, std::runtime_error for what is refused
// here.
void writeFile(const std::string& path, std::string_view content);

// The same for a file that grows: returns it, open for writing. Throws std::runtime_error also for anything but a
// regular file.
[[nodiscard]] FileDescriptor beginFile(const std::string& path, std::string_view content);

// The same, but nothing is replaced: throws std::system_error with EEXIST where something has the name by then.
[[nodiscard]] FileDescriptor beginNewFile(const std::string& path, std::string_view content);

// Throws what writeFile would throw before it writes. For a file that is written after long work.
void requireWritable(const std::string& path);

// Throws std::system_error.
void writeAll(int descriptor, std::string_view content);

} // namespace VeltoTouch::Files
