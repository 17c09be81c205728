#include "Platform/JSON.h"
#include "Velto/Commands/Command.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/StopSignals.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/PluggedIn.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kDevicesText = "Shows the touch surfaces that are plugged into this machine: node, name, serial\n"
                                     "number and bus. Needs no rights. The exit status is 1 where there is none.";

struct DevicesOptions {
    bool watches = false;
    std::optional<std::chrono::microseconds> duration; // none: without end
    bool jsonl = false;
};

std::string asLine(const HidrawNode& node) {
    const auto column = [](const std::string& text) { return text.empty() ? "-" : printable(text); };
    return fmt::format("{:<14}  {:<32}  {:<16}  {}", column(node.path), column(node.product), column(node.serialNumber),
                       column(node.bus));
}

std::string asMembers(const HidrawNode& node) {
    return fmt::format(R"("node":{},"product":{},"serialNumber":{},"bus":{})", JSON::quoted(node.path),
                       JSON::quoted(node.product), JSON::quoted(node.serialNumber), JSON::quoted(node.bus));
}

int list(bool asJSONL) {
    std::string text;
    for (const HidrawNode& node : Surface::findSurfaces())
        text += asJSONL ? fmt::format("{{\"kind\":\"device\",{}}}\n", asMembers(node)) : asLine(node) + "\n";
    writeStandardOutput(text);
    return 0;
}

void showAdded(const HidrawNode& node, bool asJSONL) {
    writeStandardOutput(asJSONL ? fmt::format("{{\"kind\":\"device\",\"action\":\"add\",{}}}\n", asMembers(node))
                                : fmt::format("{} {}\n", coloured(Colour::Green, "+"), asLine(node)));
}

void showRemoved(const HidrawNode& node, bool asJSONL) {
    writeStandardOutput(
        asJSONL ? fmt::format("{{\"kind\":\"device\",\"action\":\"remove\",\"node\":{}}}\n", JSON::quoted(node.path))
                : fmt::format("{} {}\n", coloured(Colour::Red, "-"), printable(node.path)));
}

int watch(const DevicesOptions& options) {
    EventLoop loop;
    StopSignals signals(loop); // before something is shown
    HidrawMonitor monitor = Surface::monitorSurfaces();
    const auto added = [&](const HidrawNode& node) { showAdded(node, options.jsonl); };
    const auto removed = [&](const HidrawNode& node) { showRemoved(node, options.jsonl); };
    std::ranges::for_each(monitor.nodes(), added);
    loop.addDescriptor(monitor.descriptor(), [&] { monitor.readChanges(added, removed); });
    signals.run(options.duration);
    return 0;
}

int run(const DevicesOptions& options) { return options.watches ? watch(options) : list(options.jsonl); }

} // namespace

Command makeDevicesCommand(App& program) {
    const auto options = std::make_shared<DevicesOptions>();
    App* app =
        program.addCommand("devices", {"velto devices --watch", "velto devices --jsonl | jq -r .node"}, kDevicesText);
    CLI::Option* watches = app->add_flag("--watch", options->watches, "Go on with what comes and goes, until Ctrl-C");
    addDuration(*app, options->duration)->needs(watches);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines");
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Velto
