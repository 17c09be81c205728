#pragma once

#include <utility>

#include <unistd.h>

namespace VeltoTouch {

// Owns an open file descriptor, or none (-1). Closes it on destruction.
class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    explicit FileDescriptor(int descriptor) noexcept : _descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(_descriptor, other._descriptor);
        return *this;
    }
    ~FileDescriptor() {
        if (isOpen())
            ::close(_descriptor);
    }

    [[nodiscard]] int get() const noexcept { return _descriptor; }
    // Gives the descriptor up to the caller, who closes it.
    [[nodiscard]] int release() noexcept { return std::exchange(_descriptor, -1); }
    [[nodiscard]] bool isOpen() const noexcept { return _descriptor >= 0; }

private:
    int _descriptor = -1;
};

} // namespace VeltoTouch
