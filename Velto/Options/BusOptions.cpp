#include "Velto/Options/BusOptions.h"

namespace VeltoTouch::Velto {

CLI::Option* addBus(CLI::App& app, Bus::Which& target) {
    return app.add_flag_callback(
        "--user", [&target] { target = Bus::Which::Session; }, "Use the bus of your session, not the system's");
}

void addServed(App& app, ServedChoice& target) {
    CLI::Option* option =
        app.add_option("--device", target.device, "The surface, where several are served (such as /dev/hidraw0)");
    app.offer(option, hidrawNodes())->type_name("DEVICE");
    addBus(app, target.bus);
}

} // namespace VeltoTouch::Velto
