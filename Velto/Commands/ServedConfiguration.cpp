#include "Velto/Commands/ServedConfiguration.h"

#include "Velto/Daemon/KeyNames.h"
#include "Velto/Options/Keys.h"
#include "Velto/Options/Lasting.h"
#include "Velto/Output/Terminal.h"

#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kDefault = "default";

} // namespace

ServedConfiguration::ServedConfiguration(std::string folder, ConfigurationEntries trial)
    : _folder(std::move(folder)), _trial(std::move(trial)) {
    read();
}

void ServedConfiguration::read() {
    _configuration = readConfiguration(_folder, _configuration);
    for (const auto& [origin, message] : _configuration.complaints)
        logServing(fmt::format("{}: {}", textOf(origin), message));
    ConfigurationEntries entries;
    put(entries, _configuration);
    put(entries, _trial);
    _settings = WantedSettings(entries.settings);
    setKeys(entries);
}

void ServedConfiguration::setKeys(const ConfigurationEntries& entries) {
    const KeyTable before = std::exchange(_keys, keyTableOf(entries));
    for (const KeyUseRow& row : kKeyUseRows) {
        for (const RegionRow& region : kRegionsWithPads) {
            const std::uint16_t key = keysOf(_keys, region.region).*row.use;
            if (key == keysOf(before, region.region).*row.use)
                continue;
            const ConfiguredKey* const configured = find(entries, row.use, region.region);
            logServing(fmt::format("{}.{}: {} ({})", kKeysDomain, nameOf(row.use, region.region), nameOfKey(key),
                                   configured != nullptr ? textOf(configured->origin) : kDefault));
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
