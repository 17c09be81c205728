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
    KeyUse use;
    PixelRegion region;
    std::uint16_t key; // kNoKey: none
    Origin origin;
};

struct ConfigurationEntries {
    std::vector<ConfiguredSetting> settings;
    std::vector<ConfiguredKey> keys;
};

// Puts entries in the place of those that are for the same, or behind all.
void put(ConfigurationEntries& target, const ConfigurationEntries& entries);

// Returns the key of a gesture, or null.
[[nodiscard]] const ConfiguredKey* find(const ConfigurationEntries& entries, KeyUse use, PixelRegion region) noexcept;

// Throws std::invalid_argument.
[[noreturn]] void refuse(const std::string& what);

// Throw std::invalid_argument with what is wanted instead: an entry of [recognizer] by its name and value, and one of
// [keys] by its name, such as "tap.play-pause", and a key's.
[[nodiscard]] ConfiguredSetting configuredSetting(std::string_view name, Ref<Value> value, Origin origin);
[[nodiscard]] ConfiguredKey configuredKey(std::string_view name, const std::string& key, Origin origin);

// "tap.play-pause".
[[nodiscard]] std::string nameOf(KeyUse use, PixelRegion region);

// The default keys, but for those that are configured.
[[nodiscard]] KeyTable keyTableOf(const ConfigurationEntries& entries);

} // namespace VeltoTouch
