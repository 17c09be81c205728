#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/PropertyList.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/ConfigurationOptions.h"
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
                                 "Without a key, lists the settings and the keys of gestures with their kinds, ranges\n"
                                 "and defaults and where their values come from, and the statistics.";

struct GetOptions {
    ServedChoice served;
    std::vector<std::string> keys;
    bool jsonl = false;
};

bool isOfGesture(const std::string& key) { return Keys::below(kKeysDomain, key).has_value(); }

// Returns the text under a key of a dictionary, or null.
const String* textIn(const Ref<Value>& texts, const std::string& key) {
    const auto* const dictionary = as<Dictionary>(texts);
    return dictionary != nullptr ? as<String>(dictionary->find(key)) : nullptr;
}

// Reads properties of the service, and keys of gestures.
class ServedValues {
public:
    explicit ServedValues(Bus::Client& client) : _client(client) {}

    [[nodiscard]] Ref<Value> at(const std::string& key) {
        if (isOfGesture(key))
            return keyOf(key);
        try {
            return _client.getProperty(key);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(error.what() + didYouMean(key, servedKeys()));
        }
    }

private:
    Ref<Value> keyOf(const std::string& gesture) {
        if (!_keys)
            _keys = _client.keys();
        if (const String* const name = textIn(_keys, gesture))
            return makeRef<String>(name->text());
        throw std::runtime_error(kNoValue);
    }

    Bus::Client& _client;
    Ref<Value> _keys; // of all gestures; nil until one is wanted
};

// Where the value of a setting or the key of a gesture comes from: a file and its line, "set for now" or "default";
// empty for anything else.
class Sources {
public:
    explicit Sources(Bus::Client& client) : _sources(client.sources()) {}

    [[nodiscard]] std::string of(const std::string& key) const {
        const auto setting = settingUnder(key);
        const bool isSetting = setting && !setting->row.is<SettingRow::Action>();
        if (!isSetting && !isOfGesture(key))
            return "";
        const String* const text = textIn(_sources, key);
        return text != nullptr ? text->text() : "default";
    }

private:
    const Ref<Value> _sources;
};

int get(Bus::Client& client, const GetOptions& options) {
    ServedValues values(client);
    std::optional<Sources> sources;
    if (options.jsonl)
        sources.emplace(client);
    return forEachFile(options.keys, [&](const std::string& key) {
        const std::string value = JSON::text(values.at(key).get());
        writeStandardOutput(options.jsonl ? fmt::format(R"({{"kind":"property","key":{},"value":{}{}}})",
                                                        JSON::quoted(key), value, sourceMember(sources->of(key))) +
                                                "\n"
                                          : printable(value) + "\n");
    });
}

// Whole or not at all: who may read one of these may read them all.
int list(Bus::Client& client, bool asLines) {
    const Sources sources(client);
    ServedValues values(client);
    std::vector<ReadProperty> properties;
    for (ListedProperty& property : listedProperties()) {
        Ref<Value> value = property.isRead ? values.at(property.key) : nullptr;
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
    app->addList(keyList());
    addServedKeyArguments(*app, options->keys,
                          "Properties of the service, and keys such as keys.tap.play-pause "
                          "(default: a list of them)");
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Velto
