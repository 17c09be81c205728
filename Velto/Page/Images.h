#pragma once

#include "Plugin/Algs/Algs.h"
#include "Velto/Analysis/Track.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace VeltoTouch::Page {

// What the recognizer made of each image, a row each; a firmware reset is a row too, and said to be none. Values are in
// counts, as the recognizer has them: signal times gain.
class Images {
public:
    // Without groups their columns stay empty.
    explicit Images(bool hasGroups) : _hasGroups(hasGroups) {}

    // Takes in a frame, in order. The recognizer is as it stands after it. `isShown`: it becomes a row.
    void add(const Analysis::Track::Step& step, const Algs& algs, bool isShown);

    // Rows that follow each other.
    struct Rows {
        std::size_t first = 0;
        std::size_t count = 0;
    };
    // Those of a span of time, both ends included.
    [[nodiscard]] Rows rowsFrom(std::uint64_t fromNs, std::uint64_t toNs) const;

    // Returns the members of an object: the number of rows, which of them are resets, and the columns.
    [[nodiscard]] std::string members(const Rows& rows) const;

private:
    // The strongest pixel of an image and the level that it had to exceed to turn on, or to stay on; the other level
    // is no number.
    struct Strongest {
        std::size_t pixel = 0; // a pad, or kPadCount and more: a group
        std::int32_t value = 0;
        bool wasOn = false;
        float level = 0;
    };
    [[nodiscard]] Strongest strongestOf(const Algs& algs) const;

    bool _hasGroups;
    std::vector<std::uint64_t> _ns;
    std::vector<std::size_t> _resets; // their rows
    std::vector<std::uint32_t> _frame;
    std::vector<std::uint32_t> _timeMs;
    std::array<std::vector<std::int32_t>, kPadCount> _pads;
    std::array<std::vector<std::int32_t>, kGroupCount> _groups;
    std::vector<std::int32_t> _padsOn; // bit 0 is the first's
    std::vector<std::int32_t> _groupsOn;
    std::vector<std::uint8_t> _strongest;
    std::vector<std::int32_t> _signal;
    std::vector<float> _onLevel;
    std::vector<float> _offLevel;
    std::vector<float> _touchScore;
    std::vector<std::uint8_t> _region;

    // As the frame before left them.
    Pixels _padsBefore = Algs().pixels;
    VirtualPixels _groupsBefore = Algs().virtualPixels;
};

} // namespace VeltoTouch::Page
