#include "Velto/Daemon/ConfigurationEntry.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/KeyNames.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch {
namespace {

std::vector<std::string_view> settingNames() {
    std::vector<std::string_view> names;
    for (const SettingRow& row : kSettingRows) {
        if (!row.is<SettingRow::Action>())
            names.push_back(row.key);
    }
    return names;
}

std::vector<std::string> keyNames() {
    std::vector<std::string> names;
    for (const KeyPlace& place : kKeyPlaces)
        names.push_back(nameOf(place));
    return names;
}

// Puts an entry in the place of the one that `isSame` finds.
template <class Entry, class IsSame>
void put(std::vector<Entry>& entries, const Entry& entry, const IsSame& isSame) {
    const auto found = std::ranges::find_if(entries, isSame);
    if (found == entries.end())
        entries.push_back(entry);
    else
        *found = entry;
}

} // namespace

void refuse(const std::string& what) { throw std::invalid_argument(what); }

std::string textOf(const Origin& origin) {
    return origin.line == 0 ? origin.file : fmt::format("{}:{}", origin.file, origin.line);
}

std::string nameOf(const KeyPlace& place) { return fmt::format("{}.{}", nameOf(place.use), rowOf(place.region).place); }

std::string fullKeyOf(const KeyPlace& place) { return fmt::format("{}.{}", kKeysDomain, nameOf(place)); }

ConfiguredSetting configuredSetting(std::string_view name, Ref<Value> value, Origin origin) {
    ConfiguredSetting setting{.key = Keys::algsKey(name), .value = std::move(value), .origin = std::move(origin)};
    const Judgement judgement = judgeWrite(setting.key, setting.value.get());
    if (judgement.verdict == Judgement::Verdict::Unknown && judgement.reason.empty())
        refuse(fmt::format("unknown setting '{}' (one of {} is wanted)", name, fmt::join(settingNames(), ", ")));
    if (judgement.verdict != Judgement::Verdict::Sensible && judgement.verdict != Judgement::Verdict::Doubtful)
        refuse(fmt::format("{}: {}", name, judgement.reason));
    if (settingUnder(setting.key)->row.is<SettingRow::Action>())
        refuse(fmt::format("{}: it is no value that lasts", name));
    return setting;
}

KeyPlace keyPlaceCalled(std::string_view name) {
    for (const KeyPlace& place : kKeyPlaces) {
        if (name == nameOf(place))
            return place;
    }
    refuse(fmt::format("unknown name '{}' (one of {} is wanted)", name, fmt::join(keyNames(), ", ")));
}

ConfiguredKey configuredKey(std::string_view name, const std::string& key, Origin origin) {
    const KeyPlace place = keyPlaceCalled(name);
    const auto code = keyCalled(key);
    if (!code)
        refuse(fmt::format("{}: the name of a key is wanted, such as \"KEY_MUTE\", or \"none\"", name));
    return {.place = place, .key = *code, .origin = std::move(origin)};
}

void put(ConfigurationEntries& target, const ConfigurationEntries& entries) {
    for (const ConfiguredSetting& setting : entries.settings)
        put(target.settings, setting, [&](const ConfiguredSetting& other) { return other.key == setting.key; });
    for (const ConfiguredKey& key : entries.keys)
        put(target.keys, key, [&](const ConfiguredKey& other) { return other.place == key.place; });
}

const ConfiguredKey* find(const ConfigurationEntries& entries, const KeyPlace& place) noexcept {
    const auto found = std::ranges::find(entries.keys, place, &ConfiguredKey::place);
    return found == entries.keys.end() ? nullptr : &*found;
}

KeyTable keyTableOf(const ConfigurationEntries& entries) {
    KeyTable table = kDefaultKeys;
    for (const ConfiguredKey& key : entries.keys)
        keysOf(table, key.place.region).*key.place.use = key.key;
    return table;
}

} // namespace VeltoTouch
