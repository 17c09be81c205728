#pragma once

#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Options/App.h"

#include <string>

// Options of the commands that use the message bus.

namespace VeltoTouch::Velto {

// --user: the bus of the user's session in place of the system's.
CLI::Option* addBus(CLI::App& app, Bus::Which& target);

// Selects one of the served surfaces.
struct ServedChoice {
    Bus::Which bus = Bus::Which::System;
    std::string device; // the served name, such as /dev/hidraw0 or sim; empty: the only one
};

// --device DEVICE and --user.
void addServed(App& app, ServedChoice& target);

} // namespace VeltoTouch::Velto
