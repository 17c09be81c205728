#include "Velto/Options/Keys.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/ConfigurationEntry.h"
#include "Velto/Daemon/KeyNames.h"
#include "Velto/Daemon/ValueText.h"

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kAnyFactor = ".N";

std::string keyOf(const SettingRow& row) { return fullKeyOf(row) + (row.is<SettingRow::Factors>() ? kAnyFactor : ""); }

// "a whole number from 0 to 4294967295 (default: 500)".
std::string valuesOf(const SettingRow& row) {
    const std::string wanted(kindOf(row).wanted);
    if (row.is<SettingRow::Factors>())
        return fmt::format("{}, for each N from 0 to {}", wanted, kGroupCount - 1);
    const Ref<Value> value = defaultOf({.row = row, .factor = 0});
    return value ? fmt::format("{} (default: {})", wanted, shortText(value.get())) : wanted;
}

} // namespace

std::vector<std::string> writableKeys() {
    std::vector<std::string> keys;
    for (const SettingRow& row : kSettingRows)
        keys.push_back(keyOf(row));
    return keys;
}

std::vector<std::string> readableKeys() {
    std::vector<std::string> keys;
    for (const SettingRow& row : kSettingRows) {
        if (!row.is<SettingRow::Action>())
            keys.push_back(keyOf(row));
    }
    for (const PropertyRow& row : kPropertyRows)
        keys.emplace_back(row.key);
    return keys;
}

std::vector<std::string> servedKeys() {
    std::vector<std::string> keys = readableKeys();
    for (const KeyPlace& place : kKeyPlaces)
        keys.push_back(fullKeyOf(place));
    return keys;
}

HelpList settingList() {
    HelpList list{.heading = "Settings", .entries = {}, .remarks = {}};
    for (const SettingRow& row : kSettingRows)
        list.entries.push_back({.term = keyOf(row), .text = fmt::format("{}\n{}", row.meaning, valuesOf(row))});
    return list;
}

HelpList propertyList() {
    HelpList list{.heading = "Properties", .entries = {}, .remarks = {}, .textColumn = 28};
    for (const PropertyRow& row : kPropertyRows)
        list.entries.push_back({.term = std::string(row.key), .text = std::string(row.meaning)});
    return list;
}

Candidates keyCandidates(const std::vector<std::string>& keys, const std::string& end) {
    Candidates candidates;
    for (const std::string& key : keys) {
        if (key.ends_with(kAnyFactor))
            candidates.openings.push_back(key.substr(0, key.size() - 1));
        else
            (end.empty() ? candidates.words : candidates.openings).push_back(key + end);
    }
    return candidates;
}

std::vector<ListedProperty> listedProperties() {
    std::vector<ListedProperty> properties;
    for (const FoundSetting& setting : allSettings()) {
        const ValueKind& kind = kindOf(setting.row);
        properties.push_back({.key = fullKeyOf(setting),
                              .type = kind.name,
                              .range = kind.range,
                              .bounds = kind.bounds,
                              .defaultValue = defaultOf(setting),
                              .isRead = !setting.row.is<SettingRow::Action>()});
    }
    for (const KeyPlace& place : kKeyPlaces)
        properties.push_back({.key = fullKeyOf(place),
                              .type = "key",
                              .range = "KEY_*, none",
                              .bounds = "null",
                              .defaultValue = makeRef<String>(nameOfKey(keyAt(kDefaultKeys, place))),
                              .isRead = true});
    for (const PropertyRow& row : kPropertyRows) {
        if (row.isPublic)
            properties.push_back({.key = std::string(row.key),
                                  .type = row.type,
                                  .range = "",
                                  .bounds = "null",
                                  .defaultValue = nullptr,
                                  .isRead = true});
    }
    return properties;
}

std::vector<std::string> unlistedKeys() {
    std::vector<std::string> keys;
    for (const PropertyRow& row : kPropertyRows) {
        if (!row.isPublic)
            keys.emplace_back(row.key);
    }
    return keys;
}

} // namespace VeltoTouch::Velto
