#include "Velto/Bench/RawContact.h"

#include "Plugin/Algs/Pixel.h"
#include "Plugin/Reports/Regions.h"

#include <algorithm>

namespace VeltoTouch::Bench {

void RawContact::add(std::uint64_t ns, const InputReport::Image& image) {
    _newest = {.ns = ns, .deviceMs = image.timestampMs};
    const auto strongest = std::ranges::max_element(image.padSignal);
    const bool isTouching = *strongest > kNoiseFloor;
    if (!_first) {
        _first = _newest;
        _beganBefore = isTouching;
    }
    if (isTouching && !_isTouching && ++_contacts == 1)
        _start = _newest;
    if (isTouching || _isTouching)
        _end = _newest;
    if (isTouching)
        _strongest.push_back(
            {.ns = ns, .pad = static_cast<std::size_t>(strongest - image.padSignal.begin()), .signal = *strongest});
    _isTouching = isTouching;
}

// Where the controller's clock has restarted, the host's goes on for it.
RawContact::Moment RawContact::sinceFirst(Moment moment) const noexcept {
    if (_wasReset)
        moment.deviceMs = first().deviceMs + static_cast<std::uint32_t>((moment.ns - first().ns) / 1'000'000);
    return moment;
}

bool RawContact::isIn(const std::vector<Strongest>& images, std::size_t pad) const {
    const auto strongest = std::ranges::max_element(images, {}, &Strongest::signal);
    return strongest != images.end() && regionOf(strongest->pad) == regionOf(pad);
}

// A slide rests in both of its places: each half of it is strongest in its own.
std::string_view RawContact::faultAs(const Surface::Step& asked) const {
    if (_wasReset)
        return "the controller restarted";
    if (_contacts == 0)
        return "no contact";
    if (_beganBefore)
        return "the contact began too early";
    if (_contacts > 1)
        return "more than one contact";
    if (asked.action == Surface::Action::Palm)
        return "";
    if (asked.action != Surface::Action::Slide)
        return isIn(_strongest, asked.pad) ? "" : "the wrong region";
    std::vector<Strongest> first = _strongest;
    std::vector<Strongest> second = _strongest;
    const std::uint64_t middle = _strongest.front().ns + (_strongest.back().ns - _strongest.front().ns) / 2;
    std::erase_if(first, [=](const Strongest& image) { return image.ns > middle; });
    std::erase_if(second, [=](const Strongest& image) { return image.ns <= middle; });
    return isIn(first, asked.pad) && isIn(second, asked.endPad) ? "" : "the wrong region";
}

} // namespace VeltoTouch::Bench
