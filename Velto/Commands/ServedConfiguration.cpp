#include "Velto/Commands/ServedConfiguration.h"

#include "Velto/Daemon/KeyNames.h"
#include "Velto/Options/Keys.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kDefault = "default";

template <class Entry>
std::vector<Entry> joined(std::vector<Entry> first, const std::vector<Entry>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// Where a key of the table comes from.
std::string sourceOf(const std::vector<ConfiguredKey>& keys, KeyUse use, PixelRegion region) {
    std::string source = kDefault;
    for (const ConfiguredKey& key : keys) { // the last counts
        if (key.use == use && key.region == region)
            source = textOf(key.origin);
    }
    return source;
}

} // namespace

ServedConfiguration::ServedConfiguration(std::string folder, Lasting trial)
    : _folder(std::move(folder)), _trial(std::move(trial)) {
    read();
}

void ServedConfiguration::read() {
    _configuration = readConfiguration(_folder, _configuration);
    for (const auto& [origin, message] : _configuration.complaints)
        logServing(fmt::format("{}: {}", textOf(origin), message));
    _settings = WantedSettings(joined(_configuration.settings, _trial.settings));
    setKeys(_configuration);
}

void ServedConfiguration::setKeys(const Configuration& configuration) {
    const std::vector<ConfiguredKey> keys = joined(configuration.keys, _trial.keys);
    const KeyTable before = std::exchange(_keys, keyTableOf(keys));
    for (const KeyUseRow& row : kKeyUseRows) {
        for (const RegionRow& region : kRegionsWithPads) {
            const std::uint16_t key = keysOf(_keys, region.region).*row.use;
            if (key != keysOf(before, region.region).*row.use)
                logServing(fmt::format("{}.{}: {} ({})", kKeysDomain, nameOf(row.use, region.region), nameOfKey(key),
                                       sourceOf(keys, row.use, region.region)));
        }
    }
}

void ServedConfiguration::write(const Bus::ServiceProperties& properties) const {
    _settings.write(properties, [](const WantedSettings::Wanted& written) {
        logServing(fmt::format("{}: {} ({})", written.key, shortText(written.value.get()),
                               written.source.empty() ? kDefault : written.source));
    });
}

void logServing(const std::string& line) { writeErrorLineIfTaken("velto: " + line); }

} // namespace VeltoTouch::Velto
