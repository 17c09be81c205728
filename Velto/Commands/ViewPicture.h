#pragma once

#include "Velto/Bench/Observation.h"
#include "Velto/Output/Screen.h"

#include <cstddef>
#include <string>

namespace VeltoTouch::Velto {

// What `velto view` shows beside the surface.
struct ViewState {
    std::string name;     // of the device or the file
    std::string settings; // where they come from
    std::string progress; // "live", "paused", ...
    bool isPaused = false;
    bool showsRaw = false;
    std::string message; // below the touches
    std::string keys;    // what they do
};

// Draws a moment of an observation: the pads where they lie, regions, strongest group, touch score, the touch in
// progress, the last touches that have ended by then. Without a moment it says that there is nothing yet.
void drawView(Screen& screen, const Bench::Observation& observation, std::size_t moment, const ViewState& state);

} // namespace VeltoTouch::Velto
