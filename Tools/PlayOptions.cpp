#include "Tools/PlayOptions.h"

#include <limits>
#include <stdexcept>

namespace VeltoTouch::Tools {
namespace {

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
        throw CLI::ValidationError("--set", error.what());
    }
}

} // namespace

void addSpeed(CLI::App& app, float& target, const std::string& description) {
    app.add_option_function<std::string>(
           "--speed", [&target](const std::string& text) { target = parseSpeed(text); }, description)
        ->type_name("N|max");
}

void addSettings(CLI::App& app, std::vector<Setting>& target, const std::string& description) {
    const auto parse = [&target](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            target.push_back(parseOption(text));
    };
    app.add_option_function<std::vector<std::string>>("--set", parse, description)
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
}

} // namespace VeltoTouch::Tools
