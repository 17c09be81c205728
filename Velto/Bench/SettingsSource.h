#pragma once

#include "Velto/Analysis/Setting.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Daemon/EventLoop.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace VeltoTouch::Bench {

using Analysis::Setting;

// The settings in force for a surface, from the first of these that there is:
//
//   velto serve                 while it serves a device of this name: what it has now, and every later write
//   /etc/velto-touch            the configuration
//   the defaults                of the recognizer
//
// Settings of the command line take the place of what any of them says under the same key.
//
// The loop's thread.
class SettingsSource {
public:
    using ChangeHandler = std::function<void(std::span<const Setting> changed)>;

    // `device`: the name of a connected device. Reads what is in force; `changeHandler` is called while the loop runs:
    // for each later write, and with what changes as a service begins or ends, which may be nothing. Throws
    // std::runtime_error if the service does not answer.
    SettingsSource(EventLoop& loop, std::optional<Bus::Which> bus, const std::string& device,
                   std::vector<Setting> ofCommandLine, ChangeHandler changeHandler);
    SettingsSource(const SettingsSource&) = delete;
    SettingsSource& operator=(const SettingsSource&) = delete;
    ~SettingsSource() = default;

    // The settings known to be in force: with a service all of them, else those of the configuration and the command
    // line. No actions.
    [[nodiscard]] const std::vector<Setting>& settings() const noexcept { return _settings; }

    // Says where they come from, for people: "velto serve (hidraw0), 1 of the command line".
    [[nodiscard]] std::string description() const;

private:
    void connect(EventLoop& loop, Bus::Which bus, const std::string& device);
    void serviceBegan();
    void serviceEnded();
    void busLost() const;
    void write(const std::string& key, const Ref<Value>& value);
    void takeOver(std::vector<Setting> settings);
    [[nodiscard]] std::vector<Setting> ofService();
    [[nodiscard]] std::vector<Setting> ofConfiguration();
    [[nodiscard]] Setting* settingUnderKey(const std::string& key);
    [[nodiscard]] bool isOfCommandLine(const std::string& key) const;

    const std::vector<Setting> _ofCommandLine;
    const ChangeHandler _changeHandler;
    std::optional<Bus::Client> _client; // none: no bus, or a device that has no name there
    bool _isServed = false;
    bool _isConfigured = false;
    std::vector<Setting> _settings;
};

} // namespace VeltoTouch::Bench
