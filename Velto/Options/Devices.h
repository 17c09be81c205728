#pragma once

#include "Velto/Surface/ConnectedDevice.h"
#include "Velto/Surface/Step.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The DEVICE of the command line.

namespace VeltoTouch::Velto {

struct SimulatedSurface {
    std::optional<std::vector<Surface::Step>> steps; // without them its user never ends
};
struct RecordedSurface {
    std::string file;
};
struct FirstSurface {}; // on this machine
struct SurfaceNode {
    std::string path; // /dev/hidrawN
};

struct PipedSurface {}; // on the standard input

struct DeviceChoice {
    std::string name = "sim"; // as given
    std::variant<SimulatedSurface, RecordedSurface, FirstSurface, SurfaceNode, PipedSurface> surface;

    // Of a recorded one; empty for others.
    [[nodiscard]] std::string file() const;
    // Whether its reports are made up or recorded, and have a pace to be changed.
    [[nodiscard]] bool isPlayed() const noexcept;
    // Returns the name that messages use.
    [[nodiscard]] std::string subject() const;
};

// Reads sim, sim:STEP,STEP,..., replay:FILE, surface, /dev/hidrawN or -. Throws std::invalid_argument with what is
// wrong.
[[nodiscard]] DeviceChoice parseDevice(std::string_view text);

// What is looked at: a recording, or a device.
struct Watched {
    std::string name; // as given
    std::variant<RecordedSurface, DeviceChoice> what;

    [[nodiscard]] const DeviceChoice* device() const noexcept { return std::get_if<DeviceChoice>(&what); }
};

// Reads the path of a file that exists, or else a device; the node of a device is a device. Throws
// std::invalid_argument with what is wrong.
[[nodiscard]] Watched parseWatched(const std::string& text);

// Connects the device under its name, which for the first surface is its node's path, with the accelerometers beside
// it: a made-up one of a simulated surface, this machine's of a real one. `speed` is a factor on the pace of one that
// is played. Throws std::runtime_error and what reading a recording throws.
[[nodiscard]] Surface::ConnectedDevice connect(const DeviceChoice& choice, double speed);

} // namespace VeltoTouch::Velto
