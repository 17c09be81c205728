#pragma once

#include "Platform/FileDescriptor.h"

#include <cerrno>
#include <system_error>

#include <sys/stat.h>

// System calls that throw std::system_error when they fail.

namespace VeltoTouch::Files {

[[noreturn]] inline void throwSystemError() { throw std::system_error(errno, std::generic_category()); }

inline void check(int result) {
    if (result != 0)
        throwSystemError();
}

// Takes ownership of the descriptor that a call opened.
[[nodiscard]] inline FileDescriptor opened(int descriptor) {
    if (descriptor < 0)
        throwSystemError();
    return FileDescriptor(descriptor);
}

[[nodiscard]] inline struct stat statusOf(int descriptor) {
    struct stat status {};
    check(::fstat(descriptor, &status));
    return status;
}

} // namespace VeltoTouch::Files
