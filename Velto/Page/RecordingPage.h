#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Setting.h"
#include "Velto/Analysis/Touch.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace VeltoTouch::Page {

// A recording as a page of a browser: what the pads said, what the recognizer made of it, and why. A second play may
// lie over the first.

// The texts of a touch for people, one line and what stands below it.
struct TouchTexts {
    std::string heading;
    std::string details;
};

// One play of a recording that is sorted by time.
struct Play {
    std::string file;
    PipelineRecording& recording;
    std::vector<Analysis::Setting> settings; // written before its first frame
    std::vector<Analysis::Touch> touches;    // that this play gives, all of them
    std::vector<Analysis::Label> labels;     // of the recording
    std::vector<TouchTexts> texts;           // by touch
    bool hasGroups = true;                   // groups of pads are shown too
};

// Nanoseconds from the first frame; what lies outside is played and not shown.
struct Range {
    std::uint64_t fromNs = 0;
    std::uint64_t toNs = std::numeric_limits<std::uint64_t>::max();

    // Whether something of that time lies within.
    [[nodiscard]] bool holds(std::uint64_t startNs, std::uint64_t endNs) const noexcept {
        return endNs >= fromNs && startNs <= toNs;
    }
};

// What holds for any recording: the surface, and the recognizer's bounds that no setting moves.
[[nodiscard]] std::string surfaceObject();

// All that a page shows of one or two plays, as members of an object.
[[nodiscard]] std::string pictureMembers(const std::vector<Play>& plays, const Range& range);

// Returns the whole file for one or two plays. Throws what the recording's values throw, and std::runtime_error.
[[nodiscard]] std::string recordingPage(const std::vector<Play>& plays, const Range& range);

} // namespace VeltoTouch::Page
