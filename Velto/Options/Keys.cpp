#include "Velto/Options/Keys.h"

#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

std::string keyOf(const SettingRow& row) { return fullKeyOf(row) + (row.is<SettingRow::Factors>() ? ".N" : ""); }

// "a whole number from 0 to 4294967295 (default: 500)".
std::string valuesOf(const SettingRow& row) {
    const std::string wanted(kindOf(row).wanted);
    if (row.is<SettingRow::Factors>())
        return fmt::format("{}, for each N from 0 to {}", wanted, kGroupCount - 1);
    const Ref<Value> value = defaultOf({.row = row, .factor = 0});
    return value ? fmt::format("{} (default: {})", wanted, shortText(value.get())) : wanted;
}

void addList(CLI::App& app, const std::string& list) {
    const std::string before = app.get_footer();
    app.footer(before.empty() ? list : before + "\n" + list);
}

void addListed(std::vector<ListedProperty>& properties, const FoundSetting& setting, const std::string& key) {
    const ValueKind& kind = kindOf(setting.row);
    properties.push_back({.key = key,
                          .type = kind.name,
                          .range = kind.range,
                          .bounds = kind.bounds,
                          .defaultValue = defaultOf(setting),
                          .isRead = !setting.row.is<SettingRow::Action>()});
}

} // namespace

std::string shortText(const Value* value) {
    const auto* number = as<Number>(value);
    if (number == nullptr || std::holds_alternative<bool>(number->content()) ||
        number->doubleValue() != static_cast<double>(number->floatValue()))
        return JSON::text(value);
    return fmt::format("{}", number->floatValue());
}

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

void addSettingList(CLI::App& app) {
    std::string list = "Settings:\n";
    for (const SettingRow& row : kSettingRows)
        list += fmt::format("  {}\n      {}\n      {}\n", keyOf(row), row.meaning, valuesOf(row));
    addList(app, list);
}

void addPropertyList(CLI::App& app) {
    std::string list = "Properties:\n";
    for (const PropertyRow& row : kPropertyRows)
        list += fmt::format("  {:<26}{}\n", row.key, row.meaning);
    addList(app, list);
}

std::vector<ListedProperty> listedProperties() {
    std::vector<ListedProperty> properties;
    for (const SettingRow& row : kSettingRows) {
        if (!row.is<SettingRow::Factors>())
            addListed(properties, {.row = row, .factor = 0}, fullKeyOf(row));
        for (std::size_t n = 0; row.is<SettingRow::Factors>() && n < kGroupCount; ++n)
            addListed(properties, {.row = row, .factor = n}, fmt::format("{}.{}", fullKeyOf(row), n));
    }
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
