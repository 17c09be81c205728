#include "Velto/Commands/PlugIn.h"

#include "Velto/Host/Bundle.h"
#include "Velto/Output/Terminal.h"

#include <filesystem>
#include <stdexcept>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kPlugInName = "VeltoTouchHIDService.plugin";

// Where an installation and the build folder have it, seen from the program.
std::string ownPlugIn() {
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return (folder / VELTO_BIN_TO_PRIVATE / kPlugInName).lexically_normal();
}

} // namespace

void addPlugIn(App& app, std::string& target) {
    CLI::Option* option =
        app.add_option("--plugin", target, "The plug-in's folder (default: the one that came with this program)");
    app.offer(option, fileNames())->type_name("PATH");
}

HostedService openService(const std::string& plugIn, const Surface::ConnectedDevice& device,
                          const HostedService::GestureHandler& gestureHandler) {
    const std::string folder = plugIn.empty() ? ownPlugIn() : plugIn;
    return about(folder, [&] {
        const Bundle bundle(folder);
        if (!bundle.matches(device.backend()))
            throw std::runtime_error("the plug-in is not for this device");
        return HostedService(bundle.loadFactory(), device.service(), bundle.matching(), gestureHandler);
    });
}

} // namespace VeltoTouch::Velto
