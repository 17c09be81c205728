#include "Velto/Bench/SettingsSource.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Daemon/Configuration.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Bench {
SettingsSource::SettingsSource(EventLoop& loop, std::optional<Bus::Which> bus, const std::string& device,
                               std::vector<Setting> ofCommandLine, ChangeHandler changeHandler)
    : _ofCommandLine(std::move(ofCommandLine)), _changeHandler(std::move(changeHandler)) {
    if (bus)
        connect(loop, *bus, device);
    _client ? readService() : readConfiguration();
    std::ranges::copy(_ofCommandLine, std::back_inserter(_settings));
}

// Without a bus, or without a service of this device, there is no client.
void SettingsSource::connect(EventLoop& loop, Bus::Which bus, const std::string& device) {
    if (Bus::elementOf(device).empty())
        return;
    try {
        _client.emplace(bus, device);
    } catch (const std::runtime_error&) {
        return;
    }
    _client->followProperties(
        loop, [this](const std::string& key, const Ref<Value>& value) { change(key, value); },
        [this] { _hasServiceEnded = true; });
}

void SettingsSource::readConfiguration() {
    for (ConfiguredSetting& setting : VeltoTouch::readConfiguration(kConfigurationFolder).settings) {
        _isConfigured = true;
        if (!isOfCommandLine(setting.key))
            _settings.push_back({.key = std::move(setting.key), .value = std::move(setting.value)});
    }
}

void SettingsSource::readService() {
    for (const FoundSetting& setting : allSettings()) {
        std::string key = fullKeyOf(setting);
        if (setting.row.is<SettingRow::Action>() || isOfCommandLine(key))
            continue;
        Ref<Value> value = _client->getProperty(key);
        _settings.push_back({.key = std::move(key), .value = std::move(value)});
    }
}

bool SettingsSource::isOfCommandLine(const std::string& key) const {
    return std::ranges::find(_ofCommandLine, key, &Setting::key) != _ofCommandLine.end();
}

void SettingsSource::change(const std::string& key, const Ref<Value>& value) {
    if (!settingUnder(key) || isOfCommandLine(key))
        return;
    const auto known = std::ranges::find(_settings, key, &Setting::key);
    if (known == _settings.end())
        _settings.push_back({.key = key, .value = value});
    else
        known->value = value;
    _changeHandler({.key = key, .value = value});
}

std::string SettingsSource::description() const {
    std::string text = _isConfigured ? kConfigurationFolder : "the defaults";
    if (_client)
        text = fmt::format("velto serve ({}{})", _client->element(), _hasServiceEnded ? ", which has ended" : "");
    if (!_ofCommandLine.empty())
        text += fmt::format(", {} of the command line", _ofCommandLine.size());
    return text;
}

} // namespace VeltoTouch::Bench
