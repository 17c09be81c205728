#pragma once

#include "Velto/Daemon/ConfigurationEntry.h"

#include <filesystem>
#include <string>
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

struct Complaint {
    Origin origin;
    std::string message;   // what is wrong, and what is wanted
    bool isLeftOut = true; // false: it holds, though it is surely not meant
};

// Each setting and key once: that of the last file.
struct Configuration : ConfigurationEntries {
    struct File : ConfigurationEntries {
        std::string path;
    };

    std::vector<Complaint> complaints;
    std::vector<File> files; // what was read, in order
};

// Reads what there is. A line that is wrong is complained of and left out, all else counts; so does a setting that is
// surely not meant, in spite of the complaint. A file that cannot be read, is larger than 16 KiB or no TOML has no
// effect: what it said in `inForce` goes on. Does not throw because of the files' content, nor wait for a pipe's.
[[nodiscard]] Configuration readConfiguration(const std::filesystem::path& folder, const Configuration& inForce = {});

// Reads one file. Throws std::runtime_error if it cannot be read or is no TOML.
[[nodiscard]] Configuration::File readConfigurationFile(const std::string& path, std::vector<Complaint>& complaints);

} // namespace VeltoTouch
