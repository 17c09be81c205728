#pragma once

#include "Plugin/Recording/Frame.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <span>

namespace VeltoTouch {

// Takes the surplus frames out of `frames` and returns them, in their order. What stays: the newest `maxFrameCount`
// frames that are no settings, between two of them (and after the newest) the newest setting of each key, and before
// the oldest of them the newest setting of each key of all that went before. With 0, one setting per key stays.
std::list<Frame> takeSurplus(std::list<Frame>& frames, std::uint64_t maxFrameCount);

// Sorts by time; frames of equal time keep their order. Moves list nodes, copies no frame.
void sortByTime(std::list<Frame>& frames);

// The frames of a recording, oldest first, in a bounded list. Once it has been trimmed to its bound, appending a report
// of no unusual length allocates nothing: trimmed frames lend their memory to the next reports.
//
// No lock: its owner's guards it. Operations that add a frame throw std::bad_alloc, which leaves the newest undefined.
class FrameList {
public:
    FrameList() = default;
    // Without a bound.
    explicit FrameList(std::list<Frame> frames) noexcept : _frames(std::move(frames)) {}
    // A copy has the same frames and bound. A move leaves an empty list of the same bound.
    FrameList(const FrameList& other);
    FrameList& operator=(const FrameList& other);
    FrameList(FrameList&& other) noexcept;
    FrameList& operator=(FrameList&& other) noexcept;
    ~FrameList() = default;

    [[nodiscard]] const std::list<Frame>& frames() const noexcept { return _frames; }

    // The bound: how many frames that are no settings a trimming keeps. 0 is none. Setting it trims nothing.
    [[nodiscard]] std::uint64_t bound() const noexcept { return _bound; }
    void setBound(std::uint64_t bound) noexcept { _bound = bound; }

    // Add a frame at the end, then trim to the bound if the list holds twice as many frames, settings included.
    void append(Frame frame);
    void appendReport(std::uint64_t timestampNs, std::span<const std::uint8_t> report);

    // Takes the surplus out and returns it, see takeSurplus. Releases spare memory.
    std::list<Frame> trim(std::uint64_t maxFrameCount);
    void sort();

    // Copying in pieces, frame by frame, into a list that has the memory already (RecordingCopy.h). While the
    // generation of the list that is copied stays the same, no frame is taken out of it and the order stays; frames may
    // be added.
    [[nodiscard]] std::uint64_t generation() const noexcept { return _generation; }
    // Allocates the memory of `count` reports of `reportLength` bytes.
    void reserve(std::size_t count, std::size_t reportLength);
    // Takes all frames out and keeps their memory for `appendCopy`. Release it before `appendReport`.
    void recycle() noexcept;
    // Adds a copy at the end and does not trim.
    void appendCopy(const Frame& frame);
    void releaseSpareMemory() noexcept { _spares.clear(); }

private:
    // Adds a frame at the end, in a spare frame's memory if there is one. Its content is undefined, but after trimming
    // it has no key and no value.
    Frame& addFrame();
    void trimAtTwiceTheBound();

    std::list<Frame> _frames;
    std::list<Frame> _spares; // frames that only lend their memory
    std::uint64_t _bound = 0;
    std::uint64_t _generation = 0;
};

} // namespace VeltoTouch
