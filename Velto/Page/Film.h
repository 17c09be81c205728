#pragma once

#include "Velto/Analysis/Comparison.h"
#include "Velto/Page/PlayObject.h"
#include "Velto/Page/Range.h"
#include "Velto/Page/RecordingPage.h"

#include <cstddef>
#include <string>
#include <vector>

namespace VeltoTouch::Page {

// From the start of the earlier of two touches to the end of the later one.
[[nodiscard]] Range timeOf(const Analysis::ComparedTouch& touch);

// One or two plays, of which pictures are cut.
class Film {
public:
    // Plays the recordings. Only `ranges` may be cut. Throws what the recordings' values throw.
    Film(const std::vector<Play>& plays, const std::vector<Range>& ranges);

    // How many images a range has, of the play with most.
    [[nodiscard]] std::size_t imagesIn(const Range& range) const;

    // Returns what a page shows of a range, as members of an object. Throws std::runtime_error.
    [[nodiscard]] std::string cut(const Range& range) const;

private:
    std::vector<PlayObject> _plays;
    std::vector<Item> _pairs; // touches of the two plays that belong together
};

} // namespace VeltoTouch::Page
