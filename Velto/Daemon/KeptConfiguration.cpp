#include "Velto/Daemon/KeptConfiguration.h"

#include "Plugin/Shared/Keys.h"
#include "Velto/Daemon/KeyNames.h"

#include <sstream>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>
#include <toml++/toml.h>

namespace VeltoTouch {
namespace {

constexpr const char* kHeading = "# Written by velto set --keep. It counts after config.toml; what is taken away here\n"
                                 "# no longer holds from the next reload on.\n\n";

toml::table tablesOf(std::string_view text) {
    try {
        return toml::parse(text);
    } catch (const toml::parse_error& error) {
        throw std::invalid_argument(
            fmt::format("this is no TOML: {} (line {})", error.description(), error.source().begin.line));
    }
}

// The table under a name, made where there is none.
toml::table& tableIn(toml::table& parent, std::string_view name) {
    if (toml::table* table = parent[name].as_table())
        return *table;
    return *parent.insert_or_assign(name, toml::table()).first->second.as_table();
}

// Puts a value under a dotted name.
template <class Content>
void put(toml::table& root, std::string_view name, const Content& value) {
    toml::table* table = &root;
    for (auto dot = name.find('.'); dot != std::string_view::npos; dot = name.find('.')) {
        table = &tableIn(*table, name.substr(0, dot));
        name.remove_prefix(dot + 1);
    }
    table->insert_or_assign(name, value);
}

void put(toml::table& root, const ConfiguredSetting& setting) {
    const std::string name = fmt::format("recognizer.{}", *Keys::belowAlgs(setting.key));
    const Number& number = *as<Number>(setting.value);
    if (number.isBool())
        put(root, name, number.boolValue());
    else if (number.doubleValue() == static_cast<double>(number.longLongValue()))
        put(root, name, number.longLongValue());
    else
        put(root, name, number.doubleValue());
}

} // namespace

std::filesystem::path keptFileIn(const std::filesystem::path& folder) { return folder / "config.d/90-set.toml"; }

std::string withKept(std::string_view text, const std::vector<ConfiguredSetting>& settings,
                     const std::vector<ConfiguredKey>& keys) {
    toml::table root = tablesOf(text);
    for (const ConfiguredSetting& setting : settings)
        put(root, setting);
    for (const ConfiguredKey& key : keys)
        put(root, fmt::format("keys.{}", nameOf(key.use, key.region)), nameOfKey(key.key));
    std::ostringstream written;
    written << root;
    return kHeading + written.str() + "\n";
}

} // namespace VeltoTouch
