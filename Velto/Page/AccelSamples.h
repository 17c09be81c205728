#pragma once

#include "Plugin/Recording/Frame.h"

#include <array>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace VeltoTouch::Page {

// The samples of the accelerometer in a recording.
class AccelSamples {
public:
    // `frames` are sorted by time.
    explicit AccelSamples(const std::list<Frame>& frames);

    // Returns those of a span of time, both ends included, as an object of columns.
    [[nodiscard]] std::string object(std::uint64_t fromNs, std::uint64_t toNs) const;

private:
    std::vector<std::uint64_t> _ns;
    std::array<std::vector<float>, 3> _axes;
};

} // namespace VeltoTouch::Page
