#pragma once

#include "Plugin/Recording/Frame.h"
#include "Velto/Surface/Simulation.h"
#include "Velto/Surface/Step.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Labels as `velto label` adds, changes and removes them.

namespace VeltoTouch::Velto {

// A label as the command line says it, GESTURE:REGION@START+LENGTH or spoiled@START+LENGTH.
struct SaidLabel {
    std::string text;                   // as given
    Surface::Simulation::Label label{}; // without its times
    std::uint64_t startNs = 0;          // from the recording's first frame
    std::uint32_t lengthMs = 0;         // at least 1
};

// Throw std::invalid_argument with what is wrong. A gesture is GESTURE:REGION; `elseTaken` is a word that the caller
// takes too, named beside the gestures.
[[nodiscard]] Surface::Step parseGesture(std::string_view text, std::string_view elseTaken = {});
[[nodiscard]] SaidLabel parseLabel(std::string_view text);

// Labels have the numbers that `velto label` lists before the edit.
struct LabelEdit {
    std::vector<SaidLabel> added;
    std::vector<std::pair<std::size_t, SaidLabel>> changed;
    std::vector<std::size_t> removed;

    [[nodiscard]] bool isEmpty() const noexcept { return added.empty() && changed.empty() && removed.empty(); }
};

// Edits the labels among the frames, which need not be sorted; all others stay as and where they are. A changed label
// keeps members that are not of the form. Throws std::runtime_error for a number that no label has or that is named
// twice, and for a label that reaches beyond the recording; then the frames are undefined.
void editLabels(std::list<Frame>& frames, const LabelEdit& edit);

} // namespace VeltoTouch::Velto
