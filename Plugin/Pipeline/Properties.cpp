#include "Plugin/Pipeline/Properties.h"

#include "Plugin/Shared/Overloaded.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace VeltoTouch {
namespace {

using Verdict = Judgement::Verdict;

constexpr ValueKind kSwitch{"switch", "true, false, 0, 1", "[false,true]", "true, false, 0 or 1"};
constexpr ValueKind kInteger{"integer", "0 to 4294967295", "[0,4294967295]", "a whole number from 0 to 4294967295"};
constexpr ValueKind kFloat{"float", "-3.4e38 to 3.4e38", "[-3.4028234663852886e+38,3.4028234663852886e+38]",
                           "a number from -3.4e38 to 3.4e38"};
constexpr ValueKind kAction{"action", "anything", "null", "anything"};

bool isInRange(const SettingRow& row, const Number& number) {
    const double value = number.doubleValue();
    return std::visit(Overloaded{
                          [&](SettingRow::Switch) { return value == 0.0 || value == 1.0; },
                          [&](SettingRow::Milliseconds) {
                              constexpr double kMost = std::numeric_limits<std::uint32_t>::max();
                              return !number.isBool() && value >= 0.0 && value <= kMost && value == std::trunc(value);
                          },
                          [&](SettingRow::Divisor) { return !number.isBool() && std::isfinite(number.floatValue()); },
                          [&](SettingRow::Factors) { return !number.isBool() && std::isfinite(number.floatValue()); },
                          [](SettingRow::Action) { return true; },
                      },
                      row.place);
}

std::string doubtAbout(const SettingRow& row, const Number& number) {
    if (row.is<SettingRow::Divisor>() && number.floatValue() <= 0.0F)
        return "0 or less is allowed, but every pad's value is divided by it";
    if (row.is<SettingRow::Factors>())
        return "it is stored, but recognition keeps the factors it started with";
    return "";
}

Judgement judgeValue(const SettingRow& row, const Value* value) {
    if (row.is<SettingRow::Action>())
        return {};
    const auto* number = as<Number>(value);
    if (number == nullptr || !isInRange(row, *number))
        return {.verdict = number == nullptr ? Verdict::NoNumber : Verdict::OutOfRange,
                .reason = fmt::format("{} is wanted", kindOf(row).wanted)};
    std::string doubt = doubtAbout(row, *number);
    return {.verdict = doubt.empty() ? Verdict::Sensible : Verdict::Doubtful, .reason = std::move(doubt)};
}

Judgement unknown(std::string_view key) {
    const std::string_view name = Keys::belowAlgs(key).value_or("");
    for (const SettingRow& row : kSettingRows) {
        if (row.is<SettingRow::Factors>() && Keys::below(row.key, name))
            return {.verdict = Verdict::Unknown,
                    .reason = fmt::format("factors are numbered 0 to {}", kGroupCount - 1)};
    }
    return {.verdict = Verdict::Unknown, .reason = {}};
}

std::optional<FoundSetting> spelledSetting(const std::string& key) {
    const auto setting = settingUnder(key);
    return setting && key == fullKeyOf(*setting) ? setting : std::nullopt;
}

bool isOnlyRead(const std::string& key) { return std::ranges::count(kPropertyRows, key, &PropertyRow::key) > 0; }

} // namespace

std::optional<FoundSetting> settingUnder(std::string_view key) {
    const auto name = Keys::belowAlgs(key);
    return name ? findSetting(*name) : std::nullopt;
}

std::string fullKeyOf(const SettingRow& row) { return Keys::algsKey(row.key); }

std::string fullKeyOf(const FoundSetting& setting) {
    const std::string key = fullKeyOf(setting.row);
    return setting.row.is<SettingRow::Factors>() ? fmt::format("{}.{}", key, setting.factor) : key;
}

std::vector<FoundSetting> allSettings() {
    std::vector<FoundSetting> settings;
    for (const SettingRow& row : kSettingRows) {
        const std::size_t count = row.is<SettingRow::Factors>() ? kGroupCount : 1;
        for (std::size_t n = 0; n < count; ++n)
            settings.push_back({.row = row, .factor = n});
    }
    return settings;
}

const ValueKind& kindOf(const SettingRow& row) noexcept {
    return std::visit(Overloaded{
                          [](SettingRow::Switch) -> const ValueKind& { return kSwitch; },
                          [](SettingRow::Milliseconds) -> const ValueKind& { return kInteger; },
                          [](SettingRow::Divisor) -> const ValueKind& { return kFloat; },
                          [](SettingRow::Factors) -> const ValueKind& { return kFloat; },
                          [](SettingRow::Action) -> const ValueKind& { return kAction; },
                      },
                      row.place);
}

bool isPublic(const std::string& key) {
    if (const auto setting = settingUnder(key))
        return !setting->row.is<SettingRow::Action>();
    return std::ranges::any_of(kPropertyRows, [&](const PropertyRow& row) { return row.isPublic && row.key == key; });
}

Judgement judgeWrite(const std::string& key, const Value* value) {
    if (!Keys::belowPipeline(key))
        return {};
    if (isOnlyRead(key))
        return {.verdict = Verdict::ReadOnly, .reason = "it is read only"};
    const auto setting = spelledSetting(key);
    return setting ? judgeValue(setting->row, value) : unknown(key);
}

Judgement judgeRead(const std::string& key) {
    if (!Keys::belowPipeline(key) || isOnlyRead(key))
        return {};
    const auto setting = spelledSetting(key);
    if (!setting)
        return unknown(key);
    return setting->row.is<SettingRow::Action>()
               ? Judgement{.verdict = Verdict::WriteOnly, .reason = "it is write only"}
               : Judgement{};
}

} // namespace VeltoTouch
