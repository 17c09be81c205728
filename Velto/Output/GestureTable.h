#pragma once

#include "Velto/Host/TouchGrouping.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace VeltoTouch::Velto {

// Makes a row of each touch, named after how it ended, and counts them.
class GestureTable {
public:
    struct Row {
        std::string name;    // tap, hold, rejected, firmware reset
        std::string region;  // of a moved hold all of them: "VolumeUp > VolumeDown"; empty if there is none
        std::uint32_t frame; // device frame at its start
        HostTime start;      // since the start of playback
        HostTime end;
    };

    // Returns the row of the touch that the gesture ends.
    std::optional<Row> add(const Gesture& gesture);
    // Returns the row of a hold that the recording's end cuts off at `time`.
    std::optional<Row> finish(HostTime time);

    // Returns the row of the hold in progress, lasting to its last event so far.
    [[nodiscard]] std::optional<Row> holdInProgress() const;

    // Returns how many there were, by name and region.
    [[nodiscard]] const std::map<std::string, std::map<std::string, std::uint64_t>>& counts() const noexcept {
        return _counts;
    }

private:
    Row count(Row row);

    TouchGrouping _touches;
    std::map<std::string, std::map<std::string, std::uint64_t>> _counts;
};

} // namespace VeltoTouch::Velto
