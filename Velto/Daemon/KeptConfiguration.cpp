#include "Velto/Daemon/KeptConfiguration.h"

#include "Platform/JSON.h"
#include "Plugin/Shared/Keys.h"
#include "Velto/Daemon/KeyNames.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch {
namespace {

constexpr std::string_view kHead =
    "# Written by velto set --keep, and read after config.toml. A line that is taken away no longer\n"
    "# holds from the next reload on.\n";

// Of a file without wrong lines, whose names and texts have no "#".
std::vector<Complaint> commentsIn(const std::filesystem::path& file) {
    std::vector<Complaint> comments;
    std::ifstream lines(file);
    std::string line;
    for (std::uint32_t number = 1; std::getline(lines, line); ++number) {
        if (line.find('#') != std::string::npos && kHead.find(line + "\n") == std::string_view::npos)
            comments.push_back({.origin = {.file = file, .line = number}, .message = "a comment"});
    }
    return comments;
}

// JSON and TOML write numbers and switches alike, but TOML has no integers beyond the signed ones.
std::string textOf(const Number& number) {
    const bool isLarge = number.doubleValue() >= 0x1p63;
    return isLarge ? JSON::text(Number::withDouble(number.doubleValue()).get()) : JSON::text(&number);
}

} // namespace

std::filesystem::path keptFileIn(const std::filesystem::path& folder) { return folder / "config.d/90-set.toml"; }

Configuration::File readKept(const std::filesystem::path& file, std::vector<Complaint>& lost) {
    std::vector<Complaint> complaints;
    Configuration::File kept = readConfigurationFile(file, complaints);
    std::ranges::copy_if(complaints, std::back_inserter(lost), &Complaint::isLeftOut);
    if (lost.empty())
        lost = commentsIn(file);
    return kept;
}

std::string keptText(const ConfigurationEntries& entries) {
    std::string text = fmt::format("{}\n[{}]\n", kHead, kRecognizerTable);
    for (const ConfiguredSetting& setting : entries.settings)
        text += fmt::format("{} = {}\n", *Keys::belowAlgs(setting.key), textOf(*as<Number>(setting.value)));
    text += fmt::format("\n[{}]\n", kKeysDomain);
    for (const ConfiguredKey& key : entries.keys)
        text += fmt::format("{} = \"{}\"\n", nameOf(key.place), nameOfKey(key.key));
    return text;
}

} // namespace VeltoTouch
