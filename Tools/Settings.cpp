#include "Tools/Settings.h"

#include "Pipeline/SettingKind.h"
#include "Platform/JSON.h"
#include "Tools/Terminal.h"

#include <stdexcept>

namespace VeltoTouch::Tools {

Setting parseSetting(std::string_view text) {
    const auto equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0)
        throw std::invalid_argument("KEY=VALUE is wanted");
    const std::string_view value = text.substr(equals + 1);
    Ref<Value> parsed = JSON::parse(value);
    if (!parsed)
        parsed = makeRef<String>(std::string(value));
    return {.key = std::string(text.substr(0, equals)), .value = std::move(parsed)};
}

void warnOfDoubtfulSettings(const std::vector<Setting>& settings) {
    for (const Setting& setting : settings) {
        const auto kind = settingKindOf(setting.key);
        if (kind == Algs::SettingKind::Unknown)
            complain(setting.key, "nothing knows this key");
        else if (kind == Algs::SettingKind::ReadsNumber && as<Number>(setting.value) == nullptr)
            complain(setting.key, "the value is no number and counts as 0");
    }
}

} // namespace VeltoTouch::Tools
