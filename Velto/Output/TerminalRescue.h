#pragma once

#include <initializer_list>

// Restores a terminal that a screen has taken over where only a signal handler still runs: after a fault of the
// program, and when a stop signal comes while the program waits for a terminal that takes nothing. There is one
// terminal, the standard output. The main thread.

namespace VeltoTouch::Velto::TerminalRescue {

// Keeps the terminal's modes as they are now.
void keepModes() noexcept;

// From here on a fault restores the terminal by these texts, in their order, and by the modes that were kept, before it
// ends the program. Null texts are left out.
void begin(std::initializer_list<const char*> texts) noexcept;
void end() noexcept;

// While one lives, a stop signal that waits for longer than a second restores the terminal and ends the program, though
// signals are blocked.
class Patience {
public:
    Patience() noexcept;
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;
    ~Patience();
};

// Whether poll reports one of the events of the descriptor now.
[[nodiscard]] bool isReady(int descriptor, short events) noexcept;

} // namespace VeltoTouch::Velto::TerminalRescue
