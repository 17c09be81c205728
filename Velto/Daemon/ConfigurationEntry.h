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

// "FILE:LINE", or "FILE".
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

// Puts entries in the place of those that are for the same, or behind all.
void put(ConfigurationEntries& target, const ConfigurationEntries& entries);

// Returns the key of a gesture, or null.
[[nodiscard]] const ConfiguredKey* find(const ConfigurationEntries& entries, const KeyPlace& place) noexcept;

// Throws std::invalid_argument.
[[noreturn]] void refuse(const std::string& what);

// Throw std::invalid_argument with what is wanted instead: an entry of [recognizer] by its name and value, the place of
// one of [keys] by its name, such as "tap.play-pause", and the entry by its name and a key's.
[[nodiscard]] ConfiguredSetting configuredSetting(std::string_view name, Ref<Value> value, Origin origin);
[[nodiscard]] KeyPlace keyPlaceCalled(std::string_view name);
[[nodiscard]] ConfiguredKey configuredKey(std::string_view name, const std::string& key, Origin origin);

// "tap.play-pause".
[[nodiscard]] std::string nameOf(const KeyPlace& place);
// "keys.tap.play-pause": as it is given beside the full keys of settings.
[[nodiscard]] std::string fullKeyOf(const KeyPlace& place);

// The default keys, but for those that are configured.
[[nodiscard]] KeyTable keyTableOf(const ConfigurationEntries& entries);

} // namespace VeltoTouch
