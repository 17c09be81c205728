#pragma once

#include "Velto/Daemon/Bus/TouchObject.h"

#include <systemd/sd-bus-vtable.h>

namespace VeltoTouch::Bus {

// The object as the bus library sees it: its methods, properties and signals, and a function for each.
struct TouchObject::Table {
    static const sd_bus_vtable rows[];

private:
    struct Functions;
};

} // namespace VeltoTouch::Bus
