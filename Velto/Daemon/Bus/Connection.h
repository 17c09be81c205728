#pragma once

#include "Velto/Daemon/Bus/Handles.h"
#include "Velto/Daemon/Bus/Names.h"

namespace VeltoTouch::Bus {

// A connection to a bus. It takes no file descriptors, which anybody may put into any message, and which would stay
// open as long as the message. Throws std::system_error where there is no bus.
[[nodiscard]] BusHandle connectTo(Which which);

} // namespace VeltoTouch::Bus
