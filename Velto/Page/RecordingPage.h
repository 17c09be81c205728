#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Setting.h"
#include "Velto/Analysis/Touch.h"
#include "Velto/Page/Range.h"

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

// What holds for any recording: the surface, and the recognizer's bounds that no setting moves.
[[nodiscard]] std::string surfaceObject();

// Returns the whole file for one or two plays. Throws what the recordings' values throw, and std::runtime_error.
[[nodiscard]] std::string recordingPage(const std::vector<Play>& plays, const Range& range);

} // namespace VeltoTouch::Page
