#pragma once

#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace VeltoTouch::Velto {

// Groups gestures into touches, one row each, named after how the touch ended.
class GestureTable {
public:
    struct Touch {
        std::string name;    // tap, hold, rejected, firmware reset
        std::string region;  // of a moved hold all of them: "VolumeUp > VolumeDown"; empty if there is none
        std::uint32_t frame; // device frame at its start
        HostTime start;      // since the start of playback
        HostTime end;
    };

    // `show` is called with each touch as it ends.
    explicit GestureTable(std::function<void(const Touch&)> show) : _show(std::move(show)) {}

    void add(const Gesture& gesture);
    // Shows a hold that the recording's end cut off.
    void finish(HostTime time);

    // Returns the hold in progress, lasting to its last event so far, or null.
    [[nodiscard]] const Touch* holdInProgress() const noexcept {
        return _touch && !_touch->name.empty() ? &*_touch : nullptr;
    }

    // Returns how many there were, by name and region.
    [[nodiscard]] const std::map<std::string, std::map<std::string, std::uint64_t>>& counts() const noexcept {
        return _counts;
    }

private:
    void begin(const Gesture& gesture);
    void end(std::string name, HostTime time);

    std::function<void(const Touch&)> _show;
    std::optional<Touch> _touch; // in progress
    std::map<std::string, std::map<std::string, std::uint64_t>> _counts;
};

} // namespace VeltoTouch::Velto
