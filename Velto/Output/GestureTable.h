#pragma once

#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace VeltoTouch::Velto {

// Puts the events of touches together: one gesture a touch, named by how it ended.
class GestureTable {
public:
    struct Gesture {
        std::string name;          // tap, hold, rejected, firmware reset
        std::string region;        // of a moved hold all of them: "VolumeUp > VolumeDown"; empty where there is none
        std::uint32_t frame;       // device frame at its start
        std::uint64_t startTimeNs; // since the start of playback
        std::uint64_t endTimeNs;
    };

    // `show` is called with each gesture as it ends.
    explicit GestureTable(std::function<void(const Gesture&)> show) : _show(std::move(show)) {}

    void add(const GestureEvent& event, std::uint64_t timeNs);
    // Shows a hold that the recording's end cut off.
    void finish(std::uint64_t timeNs);

    // A hold that has not ended, or null. It lasts to its last event so far.
    [[nodiscard]] const Gesture* holdInProgress() const noexcept {
        return _touch && !_touch->name.empty() ? &*_touch : nullptr;
    }

    // How many gestures there were, by name and region.
    [[nodiscard]] const std::map<std::string, std::map<std::string, std::uint64_t>>& counts() const noexcept {
        return _counts;
    }
    // The same as lines.
    [[nodiscard]] std::string summary() const;

    // A heading for rows, and a gesture as a row.
    [[nodiscard]] static std::string heading();
    [[nodiscard]] static std::string row(const Gesture& gesture);

private:
    void end(std::string name, std::uint64_t timeNs);

    std::function<void(const Gesture&)> _show;
    std::optional<Gesture> _touch; // in progress
    std::map<std::string, std::map<std::string, std::uint64_t>> _counts;
};

} // namespace VeltoTouch::Velto
