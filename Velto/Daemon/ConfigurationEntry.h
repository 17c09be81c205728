#pragma once

#include "Platform/Value.h"
#include "Velto/Daemon/KeyTable.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What a configuration consists of.

namespace VeltoTouch {

// Where something stands.
struct Origin {
    std::string file;
    std::uint32_t line = 0; // from 1; 0: the whole file
};

// Returns "FILE:LINE", or "FILE".
[[nodiscard]] std::string textOf(const Origin& origin);

struct ConfiguredSetting {
    std::string key;  // the full property key
    Ref<Value> value; // one that judgeWrite takes
    Origin origin;
};

struct ConfiguredKey {
    KeyPlace place;
    std::uint16_t key; // kNoKey: none
    Origin origin;
};

// The tables of a configuration file. The second one's name is also the domain of its entries' full keys.
inline constexpr std::string_view kRecognizerTable = "recognizer";
inline constexpr std::string_view kKeysDomain = "keys";

struct ConfigurationEntries {
    std::vector<ConfiguredSetting> settings;
    std::vector<ConfiguredKey> keys;
};

// Adds entries to `target`. One for a setting or gesture that has an entry there takes its place.
void put(ConfigurationEntries& target, const ConfigurationEntries& entries);

// Returns the entry of a gesture's key, null if it has none.
[[nodiscard]] const ConfiguredKey* find(const ConfigurationEntries& entries, const KeyPlace& place) noexcept;

// Throws std::invalid_argument with this message.
[[noreturn]] void refuse(const std::string& what);

// Make an entry of [recognizer] from its name and value; the place of a gesture's key from its name in [keys], such as
// "tap.play-pause"; and the entry from that name and a key's. Throw std::invalid_argument with what is wanted instead.
[[nodiscard]] ConfiguredSetting configuredSetting(std::string_view name, Ref<Value> value, Origin origin);
[[nodiscard]] KeyPlace keyPlaceCalled(std::string_view name);
[[nodiscard]] ConfiguredKey configuredKey(std::string_view name, const std::string& key, Origin origin);

// Returns "tap.play-pause".
[[nodiscard]] std::string nameOf(const KeyPlace& place);
// Returns "keys.tap.play-pause", as it is given beside the full keys of settings.
[[nodiscard]] std::string fullKeyOf(const KeyPlace& place);

// Returns the default keys, with those that are configured in their places.
[[nodiscard]] KeyTable keyTableOf(const ConfigurationEntries& entries);

} // namespace VeltoTouch
