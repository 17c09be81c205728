#include "Velto/Daemon/ServedConfiguration.h"

#include "Velto/Daemon/KeyNames.h"
#include "Velto/Daemon/ValueText.h"

#include <utility>

#include <fmt/format.h>

namespace VeltoTouch {
namespace {

constexpr const char* kDefault = "default";

} // namespace

ServedConfiguration::ServedConfiguration(std::string folder, ConfigurationEntries trial, Log log)
    : _folder(std::move(folder)), _trial(std::move(trial)), _log(std::move(log)) {
    read();
}

void ServedConfiguration::read() {
    _configuration = readConfiguration(_folder, _configuration);
    for (const auto& [origin, message] : _configuration.complaints)
        _log(fmt::format("{}: {}", textOf(origin), message));
    ConfigurationEntries entries;
    put(entries, _configuration);
    put(entries, _trial);
    _settings = WantedSettings(entries.settings);
    setKeys(entries);
}

void ServedConfiguration::setKeys(const ConfigurationEntries& entries) {
    const KeyTable before = std::exchange(_keys, keyTableOf(entries));
    for (const KeyPlace& place : kKeyPlaces) {
        const std::uint16_t key = keyAt(_keys, place);
        if (key == keyAt(before, place))
            continue;
        const ConfiguredKey* const configured = find(entries, place);
        _log(fmt::format("{}: {} ({})", fullKeyOf(place), nameOfKey(key),
                         configured != nullptr ? textOf(configured->origin) : kDefault));
    }
}

void ServedConfiguration::write(const Bus::ServiceProperties& properties) const {
    _settings.write(properties, [this](const WantedSettings::Wanted& written) {
        _log(fmt::format("{}: {} ({})", written.key, shortText(written.value.get()),
                         written.source.empty() ? kDefault : written.source));
    });
}

} // namespace VeltoTouch
