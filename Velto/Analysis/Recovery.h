#pragma once

#include "Platform/Value.h"
#include "Plugin/Recording/Frame.h"

#include <cstdint>
#include <list>
#include <optional>
#include <vector>

namespace VeltoTouch::Analysis {

// What can be saved of a container that may be damaged anywhere: cut, bytes changed or missing, garbage in between.
//
// A container that the reader accepts gives the reader's frames, and nothing is lost; only if it has none, it is
// searched too: the name of an old version's list may be what is damaged. Else each object that stands whole in the
// text and that the reader takes as a frame is one, unless it stands in another: a value that looks like a frame is
// none. The value of a damaged frame is not known as such; a frame in it is saved.
//
// The version is the one in which most of these objects are frames: reports have another form in each (Data, Report,
// ReportData). Among equals it is the one that the text says, at last the current one. A frame that only another
// version knows is read as that has it: the version may be what is damaged.
struct Recovery {
    // A stretch of the text that belongs to no frame and is none of the container's own; empty at the place where the
    // text ends too early.
    struct Lost {
        std::uint64_t fromByte;
        std::uint64_t toByte; // the one behind the last
    };

    std::uint64_t version = 0;
    std::list<Frame> frames; // of the current version, in the text's order
    std::vector<Lost> lost;
};

// Returns nothing if nothing can be saved. Takes time in proportion to the text, whatever is in it. Throws
// std::bad_alloc, and std::runtime_error for 4 GiB or more. Any thread.
[[nodiscard]] std::optional<Recovery> recoverFrames(const Data& container);

} // namespace VeltoTouch::Analysis
