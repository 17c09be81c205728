#pragma once

#include "Velto/Daemon/Bus/Handles.h"
#include "Velto/Daemon/Bus/Names.h"

namespace VeltoTouch::Bus {

// Opens a connection to a bus. It accepts no file descriptors: any client may put them into a message, and they would
// stay open as long as the message. Throws std::system_error if there is no bus.
[[nodiscard]] BusHandle connectTo(Which which);

} // namespace VeltoTouch::Bus
