#include "Velto/Options/ConfigurationOptions.h"

#include "Plugin/Shared/Keys.h"
#include "Velto/Daemon/KeyNames.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace VeltoTouch::Velto {

ConfigurationEntries entriesOf(const std::vector<Setting>& given, const std::string& origin) {
    ConfigurationEntries entries;
    for (const auto& [key, value] : given) {
        const Origin place{.file = origin};
        const auto* const text = as<String>(value);
        if (const auto name = Keys::belowAlgs(key))
            entries.settings.push_back(configuredSetting(*name, value, place));
        else if (const auto use = Keys::below(kKeysDomain, key))
            entries.keys.push_back(configuredKey(*use, text != nullptr ? text->text() : "", place));
        else
            throw std::invalid_argument(key + ": neither a setting nor a key such as keys.tap.play-pause");
    }
    return entries;
}

HelpList keyList() {
    HelpList list{.heading = "Keys", .entries = {}, .remarks = {}, .textColumn = 26};
    for (const KeyPlace& place : kKeyPlaces)
        list.entries.push_back({.term = fullKeyOf(place), .text = nameOfKey(keyAt(kDefaultKeys, place))});
    list.remarks = "These are the defaults; a key has the kernel's name, none is no key.";
    return list;
}

CLI::Option* addConfiguration(App& app, std::string& target, const std::string& description) {
    const auto check = [](const std::string& folder) {
        std::error_code error;
        return std::filesystem::is_directory(folder, error) ? "" : folder + ": there is no such folder";
    };
    return app.offer(app.add_option("--config", target, description), fileNames())->type_name("FOLDER")->check(check);
}

} // namespace VeltoTouch::Velto
