#include "Velto/Options/KeyOptions.h"

#include "Velto/Options/Keys.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Velto {
namespace {

CLI::Option* addSettingOption(App& app, const std::string& name, std::vector<Setting>& target, KeyScope scope,
                              const std::string& description) {
    const auto parse = [&target, scope](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            target.push_back(asUsage(text, [&] { return parseSetting(text, scope); }));
    };
    HelpList list = settingList();
    if (std::ranges::find(app.lists(), list.heading, &HelpList::heading) == app.lists().end())
        app.addList(std::move(list));
    return app.offer(app.add_option_function<std::vector<std::string>>(name, parse, description),
                     keyCandidates(writableKeys(), "="));
}

// `check` throws std::invalid_argument for a key that is none of the known ones.
CLI::Option* addKeyOption(App& app, const std::string& name, std::vector<std::string>& target,
                          void (*check)(const std::string& key), const std::vector<std::string>& known,
                          const std::string& description) {
    const auto parse = [&target, check](const std::vector<std::string>& keys) {
        for (const std::string& key : keys)
            asUsage(key, [&] { check(key); });
        target = keys;
    };
    app.addList(propertyList());
    return app.offer(app.add_option_function<std::vector<std::string>>(name, parse, description),
                     keyCandidates(known, ""));
}

} // namespace

CLI::Option* addSettings(App& app, std::vector<Setting>& target, KeyScope scope, const std::string& description,
                         const std::string& name) {
    return addSettingOption(app, name, target, scope, description)->type_name("KEY=VALUE");
}

CLI::Option* addPlayedSettings(App& app, std::vector<Setting>& target) {
    return addSettings(app, target, KeyScope::Pipeline,
                       "Write a setting before the first frame and leave out the recording's own writes of its key; "
                       "may be given several times")
        ->allow_extra_args(false);
}

CLI::Option* addSettingArguments(App& app, std::vector<Setting>& target, const std::string& description) {
    return addSettingOption(app, "KEY=VALUE", target, KeyScope::Service, description)->type_name("");
}

CLI::Option* addKeys(App& app, std::vector<std::string>& target, const std::string& description) {
    return addKeyOption(app, "--get", target, requireReadable, readableKeys(), description)->type_name("KEY");
}

CLI::Option* addServedKeyArguments(App& app, std::vector<std::string>& target, const std::string& description) {
    return addKeyOption(app, "KEY", target, requireServed, servedKeys(), description)->type_name("");
}

} // namespace VeltoTouch::Velto
