#pragma once

#include "Velto/Daemon/Configuration.h"
#include "Velto/Daemon/WantedSettings.h"
#include "Velto/Options/Lasting.h"

#include <string>

namespace VeltoTouch::Velto {

// The configuration of the surface that velto serve serves, and over it what its command line says. What is wrong and
// what changes is logged. One thread.
class ServedConfiguration {
public:
    // Reads the folder.
    ServedConfiguration(std::string folder, Lasting trial);

    // Reads the folder anew.
    void read();

    [[nodiscard]] const KeyTable& keys() const noexcept { return _keys; }

    // See WantedSettings.
    void write(const Bus::ServiceProperties& properties) const;
    [[nodiscard]] Ref<Value> sources(const Bus::ServiceProperties& properties) const {
        return _settings.sources(properties);
    }

private:
    void setKeys(const Configuration& configuration);

    const std::string _folder;
    const Lasting _trial;
    Configuration _configuration;
    WantedSettings _settings;
    KeyTable _keys = kDefaultKeys;
};

// Logs one line, unless standard error does not take it: serving does not wait for it.
void logServing(const std::string& line);

} // namespace VeltoTouch::Velto
