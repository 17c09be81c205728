#include "Velto/Daemon/Bus/Replies.h"

#include <limits>

namespace VeltoTouch::Bus {

std::string callerOf(sd_bus_message* call) {
    const char* name = sd_bus_message_get_sender(call);
    return name == nullptr ? "" : name;
}

std::uint64_t unsentOn(sd_bus* bus) noexcept {
    std::uint64_t unsent = 0;
    return sd_bus_get_n_queued_write(bus, &unsent) < 0 ? std::numeric_limits<std::uint64_t>::max() : unsent;
}

void sendError(sd_bus_message* call, const CallError& error) noexcept {
    BusError converted;
    sd_bus_error_set(converted.get(), error.name, error.what());
    sd_bus_reply_method_error(call, converted.get());
}

} // namespace VeltoTouch::Bus
