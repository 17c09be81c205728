#include "Velto/Options/KeyOptions.h"

#include "Velto/Options/Keys.h"

#include <stdexcept>

namespace VeltoTouch::Velto {
namespace {

// What is wrong with a text is wrong usage.
template <class Read>
auto asUsage(const std::string& text, const Read& read) {
    try {
        return read();
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(text, error.what());
    }
}

CLI::Option* addSettingOption(CLI::App& app, const std::string& name, std::vector<Setting>& target, KeyScope scope,
                              const std::string& description) {
    const auto parse = [&target, scope](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            target.push_back(asUsage(text, [&] { return parseSetting(text, scope); }));
    };
    addSettingList(app);
    return app.add_option_function<std::vector<std::string>>(name, parse, description);
}

CLI::Option* addKeyOption(CLI::App& app, const std::string& name, std::vector<std::string>& target,
                          const std::string& description) {
    const auto parse = [&target](const std::vector<std::string>& keys) {
        for (const std::string& key : keys)
            asUsage(key, [&] { requireReadable(key); });
        target = keys;
    };
    addPropertyList(app);
    return app.add_option_function<std::vector<std::string>>(name, parse, description);
}

} // namespace

CLI::Option* addSettings(CLI::App& app, std::vector<Setting>& target, KeyScope scope, const std::string& description) {
    return addSettingOption(app, "--set", target, scope, description)->type_name("KEY=VALUE");
}

CLI::Option* addSettingArguments(CLI::App& app, std::vector<Setting>& target, const std::string& description) {
    return addSettingOption(app, "KEY=VALUE", target, KeyScope::Service, description)->type_name("");
}

CLI::Option* addKeys(CLI::App& app, std::vector<std::string>& target, const std::string& description) {
    return addKeyOption(app, "--get", target, description)->type_name("KEY");
}

CLI::Option* addKeyArguments(CLI::App& app, std::vector<std::string>& target, const std::string& description) {
    return addKeyOption(app, "KEY", target, description)->type_name("");
}

} // namespace VeltoTouch::Velto
