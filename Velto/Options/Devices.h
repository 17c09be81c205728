#pragma once

#include "Velto/Surface/ConnectedDevice.h"
#include "Velto/Surface/Step.h"

#include <cstdint>
#include <optional>
#include <span>
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

using AnySurface = std::variant<SimulatedSurface, RecordedSurface, FirstSurface, SurfaceNode, PipedSurface>;

struct DeviceChoice {
    std::string name = "sim"; // as given
    AnySurface surface;

    // Of a recorded one; empty for others.
    [[nodiscard]] std::string file() const;
    // Whether its reports are made up or recorded, and have a pace to be changed.
    [[nodiscard]] bool isPlayed() const noexcept;
    // Returns the name that messages use.
    [[nodiscard]] std::string subject() const;
};

// What DEVICE may be. Reading, help, completion and messages are made of the forms.
struct DeviceForm {
    std::string_view opening; // "sim:", or all of it
    std::string_view rest;    // what stands behind the opening, as help names it: "STEP,..."; empty: nothing
    std::string_view meaning;
    enum class Completion : std::uint8_t { Word, Opening, FilePrefix, Nodes, None } completion;
    // Nothing if the rest is missing. Throws std::invalid_argument with what is wrong.
    std::optional<AnySurface> (*read)(std::string_view rest);
    std::string_view whyNotServed = {}; // empty: it may be served

    [[nodiscard]] std::string text() const { return std::string(opening).append(rest); }
    [[nodiscard]] bool fits(std::string_view device) const noexcept {
        return rest.empty() ? device == opening : device.starts_with(opening);
    }
};
[[nodiscard]] std::span<const DeviceForm> deviceForms() noexcept;

// Returns the form of a device, or null if it has none.
[[nodiscard]] const DeviceForm* formOf(std::string_view device) noexcept;

// Reads a device of any form. Throws std::invalid_argument with what is wrong.
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
