#pragma once

#include "Velto/Analysis/Disturbance.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace VeltoTouch::Velto {

using Analysis::Disturbance;

// The disturbances of a recording as lines for people, each with its time and frame number. Of each kind only the first
// few are kept, so that memory and output are bounded.
class Disturbances {
public:
    static constexpr std::size_t kMostListed = 10; // of each kind

    void add(const Disturbance& disturbance);

    // The lines of one kind, in order; the last one says how many more there were, if any.
    [[nodiscard]] std::vector<std::string> lines(Disturbance::Kind kind) const;

private:
    struct List {
        std::vector<std::string> lines;
        std::uint64_t unlisted = 0;
    };
    std::array<List, 3> _lists; // in the order of the kinds
};

} // namespace VeltoTouch::Velto
