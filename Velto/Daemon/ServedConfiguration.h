#pragma once

#include "Velto/Daemon/Configuration.h"
#include "Velto/Daemon/WantedSettings.h"

#include <functional>
#include <map>
#include <string>

namespace VeltoTouch {

// The configuration of the surface that velto serve serves, and over it what its command line says. What is wrong and
// what changes is logged. One thread.
class ServedConfiguration {
public:
    using Log = std::function<void(const std::string& line)>;

    // Reads the folder.
    ServedConfiguration(std::string folder, ConfigurationEntries trial, Log log);

    // Reads the folder anew.
    void read();

    // The folder's absolute path.
    [[nodiscard]] std::string path() const;

    [[nodiscard]] const KeyTable& keys() const noexcept { return _keys; }
    // Returns the keys' names by what they are for: "keys.tap.play-pause".
    [[nodiscard]] std::map<std::string, std::string> keyNames() const;

    // See WantedSettings.
    void write(const Bus::ServiceProperties& properties) const;

    // Returns a dictionary: where the settings' present values come from, as WantedSettings says it, and the keys.
    [[nodiscard]] Ref<Value> sources(const Bus::ServiceProperties& properties) const;

private:
    void setKeys();

    const std::string _folder;
    const ConfigurationEntries _trial;
    const Log _log;
    Configuration _configuration;
    ConfigurationEntries _entries; // its own, and those of the trial
    WantedSettings _settings;
    KeyTable _keys = kDefaultKeys;
};

} // namespace VeltoTouch
