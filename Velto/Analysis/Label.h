#pragma once

#include "Plugin/Recording/Frame.h"
#include "Velto/Analysis/Spoiled.h"

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace VeltoTouch::Analysis {

// What was meant by a contact. Simulated recordings say it, and recordings of people may (SimulatedRecording.h has the
// form): a metadata frame with the key "Label" and at least "gesture", a string, and "startMs" and "endMs", numbers.
struct Label {
    std::size_t index = 0; // from 1
    std::string gesture;   // "tap", "hold", "slide", "palm", "brush", or a word of somebody else's
    std::string region;    // a region's name; of a slide, where it starts. Empty if it was not said
    std::string endRegion; // of a slide; else empty
    // Nanoseconds from the recording's first frame: from the metadata frame to that plus (endMs - startMs), which wraps
    // as the device's clock does.
    std::uint64_t startNs = 0;
    std::uint64_t endNs = 0;

    // Whether a gesture should come of it; a palm and a brush should give none.
    [[nodiscard]] bool isMeant() const noexcept { return gesture == "tap" || gesture == "hold" || gesture == "slide"; }
    // Whether nothing is known of what was meant in its time: a score and a comparison leave its touches out.
    [[nodiscard]] bool isSpoiled() const noexcept { return gesture == kSpoiled; }
};

// Whether a frame is a label. Frames of the key that have another form are none.
[[nodiscard]] bool isLabel(const Frame& frame);

// Returns the labels of a recording in their order. `frames` are sorted by time.
[[nodiscard]] std::vector<Label> labelsOf(const std::list<Frame>& frames);

} // namespace VeltoTouch::Analysis
