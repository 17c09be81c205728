#include "Platform/JSON.h"
#include "Serve/Bus/Client.h"
#include "Tools/BusOptions.h"
#include "Tools/Command.h"
#include "Tools/Files.h"
#include "Tools/Terminal.h"

#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Tools {
namespace {

constexpr const char* kDescription = "Example:\n"
                                     "  velto get Pipeline.Algs.HoldTimeoutMilliseconds\n"
                                     "  velto get --jsonl Pipeline.Algs.EventStats FirmwareDebugReports\n\n"
                                     "Reads properties of a surface that velto serve serves, each a line of JSON.";

struct Options {
    ServedChoice served;
    std::vector<std::string> keys;
    bool jsonl = false;
};

int get(const Options& options) {
    Bus::Client client(options.served.bus, options.served.device);
    return forEachFile(options.keys, [&](const std::string& key) {
        const std::string value = JSON::text(client.getProperty(key).get());
        std::string quotedKey;
        JSON::appendString(quotedKey, key);
        writeStandardOutput(options.jsonl
                                ? fmt::format(R"({{"kind":"property","key":{},"value":{}}})", quotedKey, value) + "\n"
                                : value + "\n");
    });
}

} // namespace

Command makeGetCommand(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* app = program.add_subcommand("get", kDescription);
    addServed(*app, options->served);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines with the key beside the value");
    app->add_option("KEY", options->keys, "Properties of the service")->type_name("")->required();
    return {app, [options] { return get(*options); }};
}

} // namespace VeltoTouch::Tools
