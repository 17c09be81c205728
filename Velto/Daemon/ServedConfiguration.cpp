#include "Velto/Daemon/ServedConfiguration.h"

#include "Velto/Daemon/KeyNames.h"
#include "Velto/Daemon/ValueText.h"

#include <filesystem>
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
    for (const Complaint& complaint : _configuration.complaints)
        _log(fmt::format("{}: {}", textOf(complaint.origin), complaint.message));
    _entries = {};
    put(_entries, _configuration);
    put(_entries, _trial);
    _settings = WantedSettings(_entries.settings);
    setKeys();
}

void ServedConfiguration::setKeys() {
    const KeyTable before = std::exchange(_keys, keyTableOf(_entries));
    for (const KeyPlace& place : kKeyPlaces) {
        const std::uint16_t key = keyAt(_keys, place);
        if (key == keyAt(before, place))
            continue;
        const ConfiguredKey* const configured = find(_entries, place);
        _log(fmt::format("{}: {} ({})", fullKeyOf(place), nameOfKey(key),
                         configured != nullptr ? textOf(configured->origin) : kDefault));
    }
}

std::string ServedConfiguration::path() const {
    const std::filesystem::path folder = std::filesystem::absolute(_folder).lexically_normal();
    return folder.has_filename() ? folder : folder.parent_path(); // without a slash at its end
}

std::map<std::string, std::string> ServedConfiguration::keyNames() const {
    std::map<std::string, std::string> names;
    for (const KeyPlace& place : kKeyPlaces)
        names[fullKeyOf(place)] = nameOfKey(keyAt(_keys, place));
    return names;
}

Ref<Value> ServedConfiguration::sources(const Bus::ServiceProperties& properties) const {
    std::vector<Dictionary::Entry> entries = _settings.sources(properties);
    for (const ConfiguredKey& key : _entries.keys)
        entries.push_back({.key = fullKeyOf(key.place), .value = makeRef<String>(textOf(key.origin))});
    return makeRef<Dictionary>(std::move(entries));
}

void ServedConfiguration::write(const Bus::ServiceProperties& properties) const {
    _settings.write(properties, [this](const WantedSettings::Wanted& written) {
        _log(fmt::format("{}: {} ({})", written.key, shortText(written.value.get()),
                         written.source.empty() ? kDefault : written.source));
    });
}

} // namespace VeltoTouch
