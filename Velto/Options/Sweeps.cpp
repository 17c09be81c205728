#include "Velto/Options/Sweeps.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Options/Keys.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/Settings.h"
#include "Velto/Options/Suggestion.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Analysis::Sweep;

constexpr std::size_t kMostValues = 10'000;

// The keys of the settings that change recognition.
std::vector<std::string> sweepableKeys() {
    std::vector<std::string> keys;
    for (const SettingRow& row : kSettingRows) {
        if (row.is<SettingRow::Switch>() || row.is<SettingRow::Milliseconds>() || row.is<SettingRow::Divisor>())
            keys.push_back(fullKeyOf(row));
    }
    return keys;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

// FROM:TO:STEP as texts. Each is computed from FROM, so that no rounding adds up.
std::vector<std::string> rangeIn(std::string_view text) {
    const std::vector<std::string_view> parts = split(text, ':');
    const auto from = numberIn<double>(parts[0]);
    const auto to = parts.size() == 3 ? numberIn<double>(parts[1]) : std::nullopt;
    const auto step = parts.size() == 3 ? numberIn<double>(parts[2]) : std::nullopt;
    if (!from || !to || !step || !(*step > 0.0) || *to < *from)
        throw std::invalid_argument("FROM:TO:STEP are three numbers, TO not below FROM, STEP above 0");
    if ((*to - *from) / *step >= static_cast<double>(kMostValues))
        throw std::invalid_argument(fmt::format("more than {} values", kMostValues));
    std::vector<std::string> values;
    constexpr double kRounding = 1e-9; // of a step
    for (int i = 0; *from + i * *step <= *to + kRounding * *step; ++i)
        values.push_back(fmt::format("{:.10g}", *from + i * *step));
    return values;
}

Sweep parseSweep(const std::string& text) {
    const auto equals = text.find('=');
    if (equals == std::string::npos)
        throw std::invalid_argument("KEY=FROM:TO:STEP or KEY=V,V... is wanted");
    Sweep sweep{.key = text.substr(0, equals), .values = {}};
    const std::vector<std::string> keys = sweepableKeys();
    if (std::ranges::find(keys, sweep.key) == keys.end())
        throw std::invalid_argument("no setting that changes recognition" + didYouMean(sweep.key, keys));
    const std::string_view values = std::string_view(text).substr(equals + 1);
    std::vector<std::string> list;
    if (values.find(':') != std::string_view::npos)
        list = rangeIn(values);
    else
        for (const std::string_view value : split(values, ','))
            list.emplace_back(value);
    for (const std::string& value : list)
        sweep.values.push_back(parseSetting(sweep.key + "=" + value, KeyScope::Pipeline).value);
    return sweep;
}

} // namespace

void addSweeps(App& app, std::vector<Sweep>& target) {
    const auto parse = [&target](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            try {
                Sweep sweep = parseSweep(text);
                if (std::ranges::find(target, sweep.key, &Sweep::key) != target.end())
                    throw std::invalid_argument("a second sweep of this setting");
                target.push_back(std::move(sweep));
            } catch (const std::invalid_argument& error) {
                throw CLI::ValidationError(text, error.what());
            }
        }
    };
    CLI::Option* option = app.add_option_function<std::vector<std::string>>(
        "--sweep", parse, "Values to try for a setting that changes recognition; several make a grid");
    option->type_name("KEY=FROM:TO:STEP|V,V...")->required()->allow_extra_args(false);
    app.offer(option, keyCandidates(sweepableKeys(), "="));
}

} // namespace VeltoTouch::Velto
