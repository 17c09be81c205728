#pragma once

#include "Platform/FileDescriptor.h"

#include <csignal>
#include <initializer_list>
#include <optional>

#include <sys/signalfd.h>

namespace VeltoTouch {

// Blocks signals and reads them from a descriptor, so that an event loop can wait for them. They stay blocked after it.
class SignalDescriptor {
public:
    // Blocks them in this thread and in those that it starts later. Throws std::system_error.
    explicit SignalDescriptor(std::initializer_list<int> signals);

    // Readable while one of the signals waits.
    [[nodiscard]] int get() const noexcept { return _descriptor.get(); }
    // Takes the next that waits, if any.
    [[nodiscard]] std::optional<signalfd_siginfo> next() const noexcept;
    // In this thread.
    void unblock() const noexcept;

private:
    sigset_t _signals{};
    FileDescriptor _descriptor;
};

} // namespace VeltoTouch
