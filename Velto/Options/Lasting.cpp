#include "Velto/Options/Lasting.h"

#include "Plugin/Shared/Keys.h"

#include <stdexcept>

namespace VeltoTouch::Velto {

Lasting lastingOf(const std::vector<Setting>& given, const std::string& origin) {
    Lasting lasting;
    for (const auto& [key, value] : given) {
        const Origin place{.file = origin};
        const auto* const text = as<String>(value);
        if (const auto name = Keys::belowAlgs(key))
            lasting.settings.push_back(configuredSetting(*name, value, place));
        else if (const auto use = Keys::below(kKeysDomain, key))
            lasting.keys.push_back(configuredKey(*use, text != nullptr ? text->text() : "", place));
        else
            throw std::invalid_argument(key + ": neither a setting nor a key such as keys.tap.play-pause");
    }
    return lasting;
}

} // namespace VeltoTouch::Velto
