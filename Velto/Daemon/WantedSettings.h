#pragma once

#include "Velto/Daemon/Bus/PropertyRequests.h"
#include "Velto/Daemon/ConfigurationEntry.h"

#include <functional>
#include <string>
#include <vector>

namespace VeltoTouch {

// The values that all settings of a served surface are meant to have: the configuration's, or else their defaults.
// They are written as a host writes them, so that recordings hold them. One thread at a time.
class WantedSettings {
public:
    struct Wanted {
        std::string key;
        Ref<Value> value;
        std::string source; // of the value; empty: the default
    };

    // Later values of a key count. Keys that are no settings are left out.
    explicit WantedSettings(const std::vector<ConfiguredSetting>& configured = {});

    // Writes those settings that have other values now, and calls `report` for each.
    void write(const Bus::ServiceProperties& properties, const std::function<void(const Wanted&)>& report) const;

    // Returns where the present values come from, by the full key of the setting: "FILE:LINE" or "set for now". What
    // has its default is left out.
    [[nodiscard]] std::vector<Dictionary::Entry> sources(const Bus::ServiceProperties& properties) const;

private:
    std::vector<Wanted> _wanted;
};

} // namespace VeltoTouch
