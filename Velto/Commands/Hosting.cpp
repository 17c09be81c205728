#include "Velto/Commands/Hosting.h"

#include "Velto/Host/Bundle.h"
#include "Velto/Output/Terminal.h"

#include <filesystem>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kStandardInput = "-";

HelpList deviceList() {
    return {.heading = "Devices",
            .entries = {{"sim", "the simulated surface with a made-up user, without end"},
                        {"sim:STEP,...", "the simulated surface, steps as in velto simulate --help"},
                        {"replay:FILE", "a recording's reports; its settings are left out"},
                        {"surface", "the first surface on this machine"},
                        {"/dev/hidrawN", "a surface on this machine, as listed by velto devices"},
                        {kStandardInput, "reports on the standard input, as hexadecimal lines or VTR1 records"}},
            .remarks = {},
            .textColumn = 18};
}

Candidates deviceCandidates() {
    Candidates candidates = hidrawNodes();
    candidates.words = {"sim", "surface"};
    candidates.openings = {"sim:"};
    candidates.filePrefixes = {"replay:"};
    return candidates;
}

constexpr const char* kPlugInName = "VeltoTouchHIDService.plugin";

DeviceChoice parseDeviceOption(const std::string& name, const std::string& text) {
    return asUsage(name, [&] { return parseDevice(text); });
}

// Where an installation and the build folder have it, seen from the program.
std::string ownPlugIn() {
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return (folder / VELTO_BIN_TO_PRIVATE / kPlugInName).lexically_normal();
}

CLI::Option* addDeviceOf(App& app, HelpList devices, DeviceChoice& target, const std::string& description) {
    app.addList(std::move(devices));
    CLI::Option* option = app.add_option_function<std::string>(
        "--device", [&target](const std::string& text) { target = parseDeviceOption("--device", text); }, description);
    return app.offer(option, deviceCandidates())->type_name("DEVICE");
}

} // namespace

CLI::Option* addDevice(App& app, DeviceChoice& target, const std::string& description) {
    return addDeviceOf(app, deviceList(), target, description);
}

CLI::Option* addDeviceToServe(App& app, DeviceChoice& target) {
    HelpList devices = deviceList();
    std::erase_if(devices.entries, [](const auto& entry) { return entry.term == kStandardInput; });
    return addDeviceOf(app, std::move(devices), target, "The surface; see below")
        ->required()
        ->check([](const std::string& device) {
            return device == kStandardInput ? "the standard input cannot be served (velto run, view and dump read it)"
                                            : "";
        });
}

CLI::Option* addWatched(App& app, Watched& target, const std::string& description) {
    app.addList(deviceList());
    const auto parse = [&target](const std::string& text) {
        target = asUsage("DEVICE|FILE", [&] { return parseWatched(text); });
    };
    Candidates candidates = deviceCandidates();
    candidates.filePrefixes.emplace_back();
    CLI::Option* option = app.add_option_function<std::string>("DEVICE|FILE", parse, description);
    return app.offer(option, std::move(candidates))->type_name("")->required();
}

CLI::Option* addDeviceArgument(App& app, DeviceChoice& target) {
    app.addList(deviceList());
    CLI::Option* option = app.add_option_function<std::string>(
        "DEVICE", [&target](const std::string& text) { target = parseDeviceOption("DEVICE", text); },
        "What to open; see below");
    return app.offer(option, deviceCandidates())->type_name("")->required();
}

void requireOtherFile(const DeviceChoice& device, const std::string& output) {
    std::error_code notThere;
    if (!device.file().empty() && std::filesystem::equivalent(device.file(), output, notThere))
        throw std::runtime_error(output + ": it is the recording that is played");
}

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
