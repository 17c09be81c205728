#include "Velto/Daemon/Bus/UnitState.h"

#include "Velto/Daemon/Bus/Connection.h"

#include <cstdlib>
#include <memory>

namespace VeltoTouch::Bus {
namespace {

struct Free {
    void operator()(char* text) const noexcept { std::free(text); } // NOLINT(cppcoreguidelines-no-malloc)
};
using Text = std::unique_ptr<char, Free>; // the library's

// Asks a manager that is there; none is started for it.
std::string read(sd_bus* bus, const char* path, const char* interface, const char* property) {
    const auto make = [&](sd_bus_message** call) {
        return sd_bus_message_new_method_call(bus, call, "org.freedesktop.systemd1", path,
                                              "org.freedesktop.DBus.Properties", "Get");
    };
    const auto call = madeBy<BusMessage>(make, "call");
    checked(sd_bus_message_set_auto_start(call.get(), 0), "call");
    checked(sd_bus_message_append(call.get(), "ss", interface, property), "call");
    const auto send = [&](sd_bus_message** reply) {
        return sd_bus_call(bus, call.get(), kDefaultTimeout, nullptr, reply);
    };
    const auto reply = madeBy<BusMessage>(send, "service manager");
    const char* text = nullptr;
    checked(sd_bus_message_read(reply.get(), "v", "s", &text), "service manager");
    return text;
}

} // namespace

std::optional<UnitState> stateOfUnit(const std::string& unit) {
    try {
        const BusHandle bus = connectTo(Which::System);
        char* encoded = nullptr;
        checked(sd_bus_path_encode("/org/freedesktop/systemd1/unit", unit.c_str(), &encoded), "unit");
        const Text path(encoded);
        constexpr const char* kUnit = "org.freedesktop.systemd1.Unit";
        UnitState state{.load = read(bus.get(), path.get(), kUnit, "LoadState"),
                        .active = read(bus.get(), path.get(), kUnit, "ActiveState"),
                        .result = {}};
        if (state.load == "loaded")
            state.result = read(bus.get(), path.get(), "org.freedesktop.systemd1.Service", "Result");
        return state;
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

} // namespace VeltoTouch::Bus
