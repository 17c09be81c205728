#include "Velto/Daemon/KeptConfiguration.h"

#include "Platform/JSON.h"
#include "Plugin/Shared/Keys.h"
#include "Velto/Daemon/KeyNames.h"

#include <fmt/format.h>

namespace VeltoTouch {
namespace {

// JSON and TOML write numbers and switches alike, but TOML has no integers beyond the signed ones.
std::string textOf(const Number& number) {
    const bool isLarge = number.doubleValue() >= 0x1p63;
    return isLarge ? JSON::text(Number::withDouble(number.doubleValue()).get()) : JSON::text(&number);
}

} // namespace

std::filesystem::path keptFileIn(const std::filesystem::path& folder) { return folder / "config.d/90-set.toml"; }

std::string keptText(const ConfigurationEntries& entries) {
    std::string text =
        "# Written by velto set --keep, and read after config.toml. A line that is taken away no longer\n"
        "# holds from the next reload on.\n\n[recognizer]\n";
    for (const ConfiguredSetting& setting : entries.settings)
        text += fmt::format("{} = {}\n", *Keys::belowAlgs(setting.key), textOf(*as<Number>(setting.value)));
    text += "\n[keys]\n";
    for (const ConfiguredKey& key : entries.keys)
        text += fmt::format("{} = \"{}\"\n", nameOf(key.place), nameOfKey(key.key));
    return text;
}

} // namespace VeltoTouch
