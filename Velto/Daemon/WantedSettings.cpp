#include "Velto/Daemon/WantedSettings.h"

#include "Plugin/Algs/Algs.h"
#include "Plugin/Pipeline/Properties.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch {
namespace {

using Wanted = WantedSettings::Wanted;

// Whether a setting that is written with one value reads as the other. Both are numbers.
bool readsAs(const std::string& key, const Ref<Value>& written, const Ref<Value>& read) {
    const std::string name(*Keys::belowAlgs(key));
    Algs algs;
    algs.setState(name, written);
    const Ref<Value> kept = algs.getState(name);
    const auto* const present = as<Number>(read);
    return present != nullptr && as<Number>(kept)->doubleValue() == present->doubleValue();
}

} // namespace

WantedSettings::WantedSettings(const std::vector<ConfiguredSetting>& configured) {
    for (const FoundSetting& setting : allSettings()) {
        if (Ref<Value> value = defaultOf(setting)) // an action has none
            _wanted.push_back({.key = fullKeyOf(setting), .value = std::move(value), .source = ""});
    }
    for (const ConfiguredSetting& setting : configured) {
        if (const auto found = std::ranges::find(_wanted, setting.key, &Wanted::key); found != _wanted.end())
            *found = {.key = setting.key, .value = setting.value, .source = textOf(setting.origin)};
    }
}

void WantedSettings::write(const Bus::ServiceProperties& properties,
                           const std::function<void(const Wanted&)>& report) const {
    for (const Wanted& wanted : _wanted) {
        if (!readsAs(wanted.key, wanted.value, properties.get(wanted.key)) && properties.set(wanted.key, wanted.value))
            report(wanted);
    }
}

std::vector<Dictionary::Entry> WantedSettings::sources(const Bus::ServiceProperties& properties) const {
    std::vector<Dictionary::Entry> entries;
    for (const auto& [key, value, source] : _wanted) {
        const bool isWanted = readsAs(key, value, properties.get(key));
        if (!isWanted || !source.empty())
            entries.push_back({.key = key, .value = makeRef<String>(isWanted ? source : "set for now")});
    }
    return entries;
}

} // namespace VeltoTouch
