#include "Velto/Bench/SettingsSource.h"

#include "Platform/JSON.h"
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
    if (bus && !Bus::elementOf(device).empty())
        connect(loop, *bus, device);
    _settings = _isServed ? ofService() : ofConfiguration();
    std::ranges::copy(_ofCommandLine, std::back_inserter(_settings));
}

void SettingsSource::connect(EventLoop& loop, Bus::Which bus, const std::string& device) {
    try {
        _client.emplace(bus, device, Bus::Client::MayBeUnserved{});
    } catch (const std::runtime_error&) { // there is no bus
        return;
    }
    _client->followProperties(
        loop, [this](const std::string& key, const Ref<Value>& value) { write(key, value); },
        [this] { serviceEnded(); }, [this] { serviceBegan(); }, [this] { busLost(); });
    _isServed = _client->isServed();
}

void SettingsSource::serviceBegan() {
    try {
        std::vector<Setting> settings = ofService();
        _isServed = true;
        takeOver(std::move(settings));
    } catch (const std::runtime_error&) { // it has ended again, or does not answer
    }
}

void SettingsSource::serviceEnded() {
    if (std::exchange(_isServed, false))
        takeOver(ofConfiguration());
}

// What is in force for a service can be followed no more. Without one there is nothing to lose.
void SettingsSource::busLost() const {
    if (_isServed)
        Bus::Client::failOfLoss();
}

std::vector<Setting> SettingsSource::ofConfiguration() {
    std::vector<Setting> settings;
    std::vector<ConfiguredSetting> configured = VeltoTouch::readConfiguration(kConfigurationFolder).settings;
    _isConfigured = !configured.empty();
    for (ConfiguredSetting& setting : configured) {
        if (!isOfCommandLine(setting.key))
            settings.push_back({.key = std::move(setting.key), .value = std::move(setting.value)});
    }
    return settings;
}

std::vector<Setting> SettingsSource::ofService() {
    _client->requireAnswer();
    std::vector<Setting> settings;
    for (const FoundSetting& setting : allSettings()) {
        std::string key = fullKeyOf(setting);
        if (setting.row.is<SettingRow::Action>() || isOfCommandLine(key))
            continue;
        Ref<Value> value = _client->getProperty(key);
        settings.push_back({.key = std::move(key), .value = std::move(value)});
    }
    return settings;
}

// What is in force no more has its default from now on.
void SettingsSource::takeOver(std::vector<Setting> settings) {
    std::vector<Setting> changed;
    for (const Setting& old : _settings) {
        const auto setting = settingUnder(old.key);
        if (isOfCommandLine(old.key))
            settings.push_back(old);
        else if (setting && std::ranges::find(settings, old.key, &Setting::key) == settings.end())
            settings.push_back({.key = old.key, .value = defaultOf(*setting)});
    }
    for (const Setting& setting : settings) {
        const Setting* const old = settingUnderKey(setting.key);
        if (old == nullptr || JSON::text(old->value.get()) != JSON::text(setting.value.get()))
            changed.push_back(setting);
    }
    _settings = std::move(settings);
    _changeHandler(changed);
}

void SettingsSource::write(const std::string& key, const Ref<Value>& value) {
    if (!settingUnder(key) || isOfCommandLine(key))
        return;
    if (Setting* const known = settingUnderKey(key))
        known->value = value;
    else
        _settings.push_back({.key = key, .value = value});
    const Setting written{.key = key, .value = value};
    _changeHandler(std::span(&written, 1));
}

Setting* SettingsSource::settingUnderKey(const std::string& key) {
    const auto found = std::ranges::find(_settings, key, &Setting::key);
    return found == _settings.end() ? nullptr : &*found;
}

bool SettingsSource::isOfCommandLine(const std::string& key) const {
    return std::ranges::find(_ofCommandLine, key, &Setting::key) != _ofCommandLine.end();
}

std::string SettingsSource::description() const {
    std::string text = _isConfigured ? kConfigurationFolder : "the defaults";
    if (_isServed)
        text = fmt::format("velto serve ({})", _client->element());
    if (!_ofCommandLine.empty())
        text += fmt::format(", {} of the command line", _ofCommandLine.size());
    return text;
}

} // namespace VeltoTouch::Bench
