#include "Tools/PlayOptions.h"

#include <limits>
#include <stdexcept>

namespace VeltoTouch::Tools {
namespace {

constexpr double kLongestDuration = 1e9; // 31 years

float parseSpeed(const std::string& text) {
    if (text == "max")
        return std::numeric_limits<float>::infinity();
    float speed = 0;
    if (!CLI::detail::lexical_cast(text, speed) || !(speed > 0.0F))
        throw CLI::ValidationError("--speed", "a number above 0 or max is wanted");
    return speed;
}

Setting parseOption(const std::string& text) {
    try {
        return parseSetting(text);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(text, error.what());
    }
}

double parseDuration(const std::string& text) {
    double seconds = 0;
    if (!CLI::detail::lexical_cast(text, seconds) || !(seconds > 0.0))
        throw CLI::ValidationError("--duration", "a number of seconds above 0 is wanted");
    return seconds < kLongestDuration ? seconds : kForever;
}

CLI::Option* addSettingOption(CLI::App& app, const std::string& name, std::vector<Setting>& target,
                              const std::string& description) {
    const auto parse = [&target](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            target.push_back(parseOption(text));
    };
    return app.add_option_function<std::vector<std::string>>(name, parse, description);
}

} // namespace

void addSpeed(CLI::App& app, float& target, const std::string& description) {
    app.add_option_function<std::string>(
           "--speed", [&target](const std::string& text) { target = parseSpeed(text); }, description)
        ->type_name("N|max");
}

void addSettings(CLI::App& app, std::vector<Setting>& target, const std::string& description) {
    addSettingOption(app, "--set", target, description)->type_name("KEY=VALUE")->allow_extra_args(false);
}

CLI::Option* addSettingArguments(CLI::App& app, std::vector<Setting>& target, const std::string& description) {
    return addSettingOption(app, "KEY=VALUE", target, description)->type_name("");
}

CLI::Option* addDuration(CLI::App& app, double& target) {
    return app
        .add_option_function<std::string>(
            "--duration", [&target](const std::string& text) { target = parseDuration(text); },
            "End after so many seconds")
        ->type_name("S");
}

} // namespace VeltoTouch::Tools
