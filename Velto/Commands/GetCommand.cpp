#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/PropertyList.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Suggestion.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kGetText = "Reads properties of a surface that velto serve serves, each a line of JSON.\n"
                                 "Without a key, lists the settings with their kinds, ranges and defaults and where\n"
                                 "their values come from, and the statistics.";

struct GetOptions {
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

// Where the value of a setting comes from: a file and its line, "set for now" or "default"; empty for anything else.
class Sources {
public:
    explicit Sources(Bus::Client& client) : _sources(client.sources()) {}

    [[nodiscard]] std::string of(const std::string& key) const {
        const auto setting = settingUnder(key);
        if (!setting || setting->row.is<SettingRow::Action>())
            return "";
        const auto* const dictionary = as<Dictionary>(_sources);
        const auto* const text = dictionary != nullptr ? as<String>(dictionary->find(key)) : nullptr;
        return text != nullptr ? text->text() : "default";
    }

private:
    const Ref<Value> _sources;
};

int get(Bus::Client& client, const GetOptions& options) {
    std::optional<Sources> sources;
    if (options.jsonl)
        sources.emplace(client);
    return forEachFile(options.keys, [&](const std::string& key) {
        const std::string value = JSON::text(read(client, key).get());
        std::string quotedKey;
        JSON::appendString(quotedKey, key);
        writeStandardOutput(options.jsonl ? fmt::format(R"({{"kind":"property","key":{},"value":{}{}}})", quotedKey,
                                                        value, sourceMember(sources->of(key))) +
                                                "\n"
                                          : printable(value) + "\n");
    });
}

// Whole or not at all: who may read one of these may read them all.
int list(Bus::Client& client, bool asLines) {
    const Sources sources(client);
    std::vector<ReadProperty> properties;
    for (ListedProperty& property : listedProperties()) {
        Ref<Value> value = property.isRead ? client.getProperty(property.key) : nullptr;
        std::string source = sources.of(property.key);
        properties.push_back({.property = std::move(property), .value = std::move(value), .source = std::move(source)});
    }
    writeStandardOutput(asLines ? propertyLines(properties) : propertyTable(properties));
    return 0;
}

int run(const GetOptions& options) {
    Bus::Client client(options.served.bus, options.served.device);
    return options.keys.empty() ? list(client, options.jsonl) : get(client, options);
}

} // namespace

Command makeGetCommand(App& program) {
    const auto options = std::make_shared<GetOptions>();
    App* app = program.addCommand("get",
                                  {"velto get", "velto get Pipeline.Algs.HoldTimeoutMilliseconds",
                                   "velto get --jsonl Pipeline.Algs.EventStats FirmwareDebugReports"},
                                  kGetText);
    addServed(*app, options->served);
    app->add_flag("--jsonl", options->jsonl,
                  "JSON Lines: key, value and source; in a list also type, range and default");
    app->addList(settingList());
    addKeyArguments(*app, options->keys, "Properties of the service (default: a list of them)");
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Velto
