#include "Velto/Options/PlayOptions.h"

#include "Velto/Options/Numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kMax = "max";                            // in place of a number
constexpr std::chrono::duration<double> kLongestDuration{1e9}; // 31 years

float parseSpeed(const std::string& text) {
    if (text == kMax)
        return std::numeric_limits<float>::infinity();
    constexpr auto kFastest = static_cast<double>(std::numeric_limits<float>::max());
    const auto speed = static_cast<float>(std::min(numberIn<double>(text).value_or(0), kFastest));
    if (speed <= 0.0F)
        throw CLI::ValidationError("--speed", "a number above 0 or max is wanted");
    return speed;
}

std::optional<std::chrono::microseconds> parseDuration(const std::string& text) {
    const auto seconds = numberIn<double>(text);
    if (!seconds || *seconds <= 0.0)
        throw CLI::ValidationError("--duration", "a number of seconds above 0 is wanted");
    const std::chrono::duration<double> duration(*seconds);
    if (duration >= kLongestDuration)
        return std::nullopt;
    return std::chrono::duration_cast<std::chrono::microseconds>(duration);
}

} // namespace

void addSpeed(App& app, float& target, const std::string& description) {
    CLI::Option* option = app.add_option_function<std::string>(
        "--speed", [&target](const std::string& text) { target = parseSpeed(text); }, description);
    app.offer(option, {.words = {kMax}, .openings = {}, .filePrefixes = {}, .patterns = {}})->type_name("N|max");
}

HostTime parseSeconds(const std::string& name, const std::string& text) {
    const auto seconds = numberIn<double>(text);
    if (!seconds || *seconds < 0.0 || *seconds > kLongestDuration.count())
        throw CLI::ValidationError(name, "a number of seconds from 0 on is wanted");
    return HostTime(static_cast<std::uint64_t>(std::llround(*seconds * 1e9)));
}

CLI::Option* addDuration(App& app, std::optional<std::chrono::microseconds>& target) {
    return app
        .add_option_function<std::string>(
            "--duration", [&target](const std::string& text) { target = parseDuration(text); },
            "End after so many seconds")
        ->type_name("S");
}

} // namespace VeltoTouch::Velto
