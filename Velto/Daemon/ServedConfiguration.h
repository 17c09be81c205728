#pragma once

#include "Velto/Daemon/Configuration.h"
#include "Velto/Daemon/WantedSettings.h"

#include <functional>
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

    [[nodiscard]] const KeyTable& keys() const noexcept { return _keys; }

    // See WantedSettings.
    void write(const Bus::ServiceProperties& properties) const;
    [[nodiscard]] Ref<Value> sources(const Bus::ServiceProperties& properties) const {
        return _settings.sources(properties);
    }

private:
    void setKeys(const ConfigurationEntries& entries);

    const std::string _folder;
    const ConfigurationEntries _trial;
    const Log _log;
    Configuration _configuration;
    WantedSettings _settings;
    KeyTable _keys = kDefaultKeys;
};

} // namespace VeltoTouch
