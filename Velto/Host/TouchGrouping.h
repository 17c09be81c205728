#pragma once

#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace VeltoTouch {

// Groups gestures into touches:
//
//   mayBegin                begins a touch, as do holdStart, holdChange and tap if none is in progress: a hold that a
//                           changed setting has ended can begin again under the same finger
//   holdStart, holdChange   go on with it
//   tap, holdEnd, cancel    end it; the last two are nothing where nobody saw it begin
//   firmwareReset           is a touch of its own
class TouchGrouping {
public:
    struct Touch {
        GestureKind last;                      // the gesture that ended it, or the newest so far
        std::vector<std::string_view> regions; // its own, or all of a moved hold in order; empty if there is none
        std::uint32_t frame;                   // device frame at its start
        HostTime start;
        HostTime end; // of its last gesture
    };

    // Takes in a gesture, in order. Returns the touch that it ends.
    [[nodiscard]] std::optional<Touch> add(const Gesture& gesture);

    // Returns the hold in progress, or null.
    [[nodiscard]] const Touch* holdInProgress() const noexcept {
        return _touch && _touch->last != GestureKind::MayBegin ? &*_touch : nullptr;
    }

private:
    std::optional<Touch> _touch; // in progress
};

// Returns what a touch came to, by the gesture that ended it: tap, hold, rejected or firmware reset.
[[nodiscard]] std::string_view nameOfEnd(GestureKind last) noexcept;

} // namespace VeltoTouch
