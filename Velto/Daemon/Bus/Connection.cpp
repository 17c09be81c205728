#include "Velto/Daemon/Bus/Connection.h"

#include <cerrno>
#include <cstdlib>
#include <string>

namespace VeltoTouch::Bus {
namespace {

std::string systemAddress() {
    const char* address = ::secure_getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address != nullptr ? address : "unix:path=/run/dbus/system_bus_socket";
}

std::string sessionAddress() {
    if (const char* address = ::secure_getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr)
        return address;
    const char* folder = ::secure_getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr)
        throw std::system_error(ENOENT, std::generic_category(), "no session");
    return std::string("unix:path=") + folder + "/bus";
}

} // namespace

BusHandle connectTo(Which which) {
    constexpr const char* kConnection = "connection";
    const std::string address = which == Which::System ? systemAddress() : sessionAddress();
    auto bus = madeBy<BusHandle>(sd_bus_new, kConnection);
    checked(sd_bus_set_address(bus.get(), address.c_str()), kConnection);
    checked(sd_bus_set_bus_client(bus.get(), 1), kConnection);
    checked(sd_bus_negotiate_fds(bus.get(), 0), kConnection);
    checked(sd_bus_start(bus.get()), kConnection);
    return bus;
}

} // namespace VeltoTouch::Bus
