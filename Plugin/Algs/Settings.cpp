#include "Plugin/Algs/Settings.h"

#include "Plugin/Algs/Algs.h"
#include "Plugin/Shared/Keys.h"
#include "Plugin/Shared/Overloaded.h"

#include <sstream>

namespace VeltoTouch {
namespace {

constexpr std::string_view kEventStats = *Keys::belowAlgs(Keys::kEventStats);
constexpr std::string_view kAlgsDebugInfo = *Keys::belowAlgs(Keys::kAlgsDebugInfo);

std::optional<std::size_t> factorIn(std::string_view text) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    unsigned long index = 0;
    if (!(stream >> index))
        index = 0;
    if (index >= kGroupCount)
        return std::nullopt;
    return index;
}

// The factor that a key names, if it is a row's.
std::optional<std::size_t> factorUnder(const SettingRow& row, std::string_view key) {
    if (!row.is<SettingRow::Factors>())
        return key == row.key ? std::optional<std::size_t>(0) : std::nullopt;
    const auto number = Keys::below(row.key, key);
    return number ? factorIn(*number) : std::nullopt;
}

// What is no number counts as 0.
float floatReading(const Number* number) noexcept { return number != nullptr ? number->floatValue() : 0.0F; }
std::uint32_t millisecondsReading(const Number* number) noexcept {
    return number != nullptr ? static_cast<std::uint32_t>(number->unsignedLongLongValue()) : 0;
}

} // namespace

std::optional<FoundSetting> findSetting(std::string_view key) {
    for (const SettingRow& row : kSettingRows) {
        if (const auto factor = factorUnder(row, key))
            return FoundSetting{.row = row, .factor = *factor};
    }
    return std::nullopt;
}

Ref<Value> valueOf(const FoundSetting& setting, const HandStats& hand, const VirtualImage& image) {
    return std::visit(
        Overloaded{
            [&](SettingRow::Switch place) { return Number::withBool(hand.*place); },
            [&](SettingRow::Milliseconds place) { return Number::withUnsignedInt(hand.*place); },
            [&](SettingRow::Divisor place) { return Number::withFloat(hand.*place); },
            [&](SettingRow::Factors place) { return Number::withFloat((image.*place).at(setting.factor)); },
            [](SettingRow::Action) { return Ref<Number>(); },
        },
        setting.row.place);
}

Ref<Value> defaultOf(const FoundSetting& setting) { return valueOf(setting, HandStats(), VirtualImage()); }

void Algs::setState(const std::string& key, const Ref<Value>& value) {
    const auto setting = findSetting(key);
    if (!setting)
        return;
    const auto* number = as<Number>(value);
    std::visit(Overloaded{
                   [&](SettingRow::Switch place) { handStats.*place = number != nullptr && number->boolValue(); },
                   [&](SettingRow::Milliseconds place) { handStats.*place = millisecondsReading(number); },
                   [&](SettingRow::Divisor place) { handStats.*place = floatReading(number); },
                   [&](SettingRow::Factors place) { (virtualImage.*place).at(setting->factor) = floatReading(number); },
                   [&](SettingRow::Action act) { (eventStats.*act)(); },
               },
               setting->row.place);
}

Ref<Value> Algs::getState(const std::string& key) const {
    if (key == kEventStats)
        return eventStats.statsDictionary();
    if (key == kAlgsDebugInfo) {
        std::vector<Dictionary::Entry> entries;
        entries.push_back({.key = std::string(kEventStats), .value = eventStats.statsDictionary()});
        return makeRef<Dictionary>(std::move(entries));
    }
    const auto setting = findSetting(key);
    return setting ? valueOf(*setting, handStats, virtualImage) : nullptr;
}

} // namespace VeltoTouch
