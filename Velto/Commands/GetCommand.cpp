#include "Platform/JSON.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/PropertyList.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Suggestion.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kText = "Reads properties of a surface that velto serve serves, each a line of JSON.\n"
                              "Without a key, lists the settings with their kinds, ranges and defaults, and the\n"
                              "statistics.";

struct Options {
    ServedChoice served;
    std::vector<std::string> keys;
    bool jsonl = false;
};

Ref<Value> read(Bus::Client& client, const std::string& key) {
    try {
        return client.getProperty(key);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(error.what() + didYouMean(key, readableKeys()));
    }
}

int get(Bus::Client& client, const Options& options) {
    return forEachFile(options.keys, [&](const std::string& key) {
        const std::string value = JSON::text(read(client, key).get());
        std::string quotedKey;
        JSON::appendString(quotedKey, key);
        writeStandardOutput(options.jsonl
                                ? fmt::format(R"({{"kind":"property","key":{},"value":{}}})", quotedKey, value) + "\n"
                                : printable(value) + "\n");
    });
}

// Whole or not at all: who may read one of these may read them all.
int list(Bus::Client& client, bool asLines) {
    std::vector<ReadProperty> properties;
    for (ListedProperty& property : listedProperties()) {
        Ref<Value> value = property.isRead ? client.getProperty(property.key) : nullptr;
        properties.push_back({.property = std::move(property), .value = std::move(value)});
    }
    writeStandardOutput(asLines ? propertyLines(properties) : propertyTable(properties));
    return 0;
}

int run(const Options& options) {
    Bus::Client client(options.served.bus, options.served.device);
    return options.keys.empty() ? list(client, options.jsonl) : get(client, options);
}

} // namespace

Command makeGetCommand(App& program) {
    const auto options = std::make_shared<Options>();
    App* app = program.addCommand("get",
                                  {"velto get", "velto get Pipeline.Algs.HoldTimeoutMilliseconds",
                                   "velto get --jsonl Pipeline.Algs.EventStats FirmwareDebugReports"},
                                  kText);
    addServed(*app, options->served);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines: key and value; in a list also type, range and default");
    app->addList(settingList());
    addKeyArguments(*app, options->keys, "Properties of the service (default: a list of them)");
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Velto
