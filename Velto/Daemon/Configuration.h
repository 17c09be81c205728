#pragma once

#include "Platform/Value.h"
#include "Velto/Daemon/KeyTable.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// What lasts: settings of the recognizer, and the keys for gestures, from the files of a folder:
//
//   config.toml        the administrator's; no program writes it
//   config.d/*.toml    read after it, in the order of their names; of one setting the last counts
//
//   [recognizer]
//   HoldTimeoutMilliseconds = 250          # settings by their names (Plugin/Algs/Settings.h)
//   VirtualNormalizationFactors.3 = 1.5
//
//   [keys]
//   tap.play-pause = "KEY_MUTE"            # keys by the kernel's names, "none" for no key
//   hold.volume-up = "KEY_NEXTSONG"

namespace VeltoTouch {

inline constexpr const char* kConfigurationFolder = "/etc/velto-touch";

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

// Whether two keys are for the same gesture.
[[nodiscard]] inline bool isSameUse(const ConfiguredKey& a, const ConfiguredKey& b) noexcept {
    return a.use == b.use && a.region == b.region;
}

struct Complaint {
    Origin origin;
    std::string message; // what is wrong, and what is wanted
};

struct Configuration {
    struct File {
        std::string path;
        std::vector<ConfiguredSetting> settings;
        std::vector<ConfiguredKey> keys;
    };

    std::vector<ConfiguredSetting> settings; // each key once
    std::vector<ConfiguredKey> keys;         // each use and region once
    std::vector<Complaint> complaints;
    std::vector<File> files; // what was read, in order
};

// Throw std::invalid_argument with what is wanted instead: an entry of [recognizer] by its name and value, and one of
// [keys] by its name, such as "tap.play-pause", and a key's.
[[nodiscard]] ConfiguredSetting configuredSetting(std::string_view name, Ref<Value> value, Origin origin);
[[nodiscard]] ConfiguredKey configuredKey(std::string_view name, const std::string& key, Origin origin);

// "tap.play-pause".
[[nodiscard]] std::string nameOf(KeyUse use, PixelRegion region);

// Reads what there is. A line that is wrong is complained of and left out, all else counts; so does a setting that is
// surely not meant, in spite of the complaint. A file that cannot be read or is no TOML has no effect: what it said in
// `inForce` goes on. Does not throw because of the files' content.
[[nodiscard]] Configuration readConfiguration(const std::filesystem::path& folder, const Configuration& inForce = {});

// The default keys, but for those that are configured; of one use and region the last counts.
[[nodiscard]] KeyTable keyTableOf(const std::vector<ConfiguredKey>& keys);

} // namespace VeltoTouch
