#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace VeltoTouch::Analysis {

// What one pad says, in counts, as the device reports its signal. Memory does not grow with the number of signals.
class PadStatistics {
public:
    // Over the images after which the recognizer has no pad and no group of pads on. The baseline is the median, the
    // noise the distance from it that 68 % of the signals do not exceed (nearest rank, both): of a normal distribution
    // its standard deviation, but the few images in which a finger comes or goes do not weigh.
    struct Rest {
        std::int32_t baseline;
        std::int32_t noise;
    };

    void add(std::int16_t signal, bool isAtRest);

    [[nodiscard]] std::optional<Rest> rest() const;                                   // none without such an image
    [[nodiscard]] std::optional<std::int16_t> peak() const noexcept { return _peak; } // of all images

private:
    std::optional<std::int16_t> _peak;
    std::vector<std::uint64_t> _atRest; // how often each signal came, from the lowest to the highest; empty: none did
    std::uint64_t _atRestCount = 0;
};

} // namespace VeltoTouch::Analysis
