#include "Velto/Bench/RawContacts.h"

#include "Plugin/Algs/Pixel.h"
#include "Plugin/Reports/Regions.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Bench {

void RawContacts::add(std::uint64_t ns, const InputReport::Image& image) {
    _newest = {.ns = ns, .deviceMs = image.timestampMs};
    const auto strongest = std::ranges::max_element(image.padSignal);
    const bool isTouching = *strongest > kNoiseFloor;
    if (!_first) {
        _first = _newest;
        _beganBefore = isTouching;
    }
    if (isTouching && !_isTouching)
        _contacts.push_back({.span = {.start = _newest, .end = _newest}, .images = {}});
    if (isTouching || _isTouching)
        _contacts.back().span.end = _newest;
    if (isTouching)
        _contacts.back().images.push_back(
            {.ns = ns, .pad = static_cast<std::size_t>(strongest - image.padSignal.begin()), .signal = *strongest});
    _isTouching = isTouching;
}

// Where the controller's clock has restarted, the host's goes on for it.
RawContacts::Moment RawContacts::sinceFirst(Moment moment) const noexcept {
    if (_wasReset)
        moment.deviceMs = first().deviceMs + static_cast<std::uint32_t>((moment.ns - first().ns) / 1'000'000);
    return moment;
}

std::vector<RawContacts::Span> RawContacts::spans() const {
    std::vector<Span> spans;
    for (const Contact& contact : _contacts)
        spans.push_back({.start = sinceFirst(contact.span.start), .end = sinceFirst(contact.span.end)});
    return spans;
}

std::vector<RawContacts::Span> RawContacts::spansAs(const Surface::Step& asked) const {
    if (_contacts.empty())
        return {allImages()};
    const auto rank = [&asked](const Contact& contact) {
        std::uint64_t pressed = 0;
        for (const Strongest& image : contact.images)
            pressed += static_cast<std::uint64_t>(image.signal);
        return std::pair(canBe(asked, contact), pressed);
    };
    const auto meant = std::ranges::max_element(_contacts, {}, rank) - _contacts.begin();
    std::vector<Span> all = spans();
    std::rotate(all.begin(), all.begin() + meant, all.begin() + meant + 1);
    return all;
}

std::optional<std::uint64_t> RawContacts::endNs() const noexcept {
    return _isTouching || _contacts.empty() ? std::nullopt : std::optional(_contacts.back().span.end.ns);
}

bool RawContacts::isIn(const std::vector<Strongest>& images, std::size_t pad) {
    const auto strongest = std::ranges::max_element(images, {}, &Strongest::signal);
    return strongest != images.end() && regionOf(strongest->pad) == regionOf(pad);
}

// A slide rests in both of its places: each half of it is strongest in its own.
bool RawContacts::canBe(const Surface::Step& asked, const Contact& contact) {
    if (asked.action == Surface::Action::Palm)
        return true;
    if (asked.action != Surface::Action::Slide)
        return isIn(contact.images, asked.pad);
    std::vector<Strongest> first = contact.images;
    std::vector<Strongest> second = contact.images;
    const std::uint64_t middle = first.front().ns + (first.back().ns - first.front().ns) / 2;
    std::erase_if(first, [=](const Strongest& image) { return image.ns > middle; });
    std::erase_if(second, [=](const Strongest& image) { return image.ns <= middle; });
    return isIn(first, asked.pad) && isIn(second, asked.endPad);
}

std::string RawContacts::faultAs(const Surface::Step& asked) const {
    if (_wasReset)
        return "the controller restarted";
    if (_contacts.empty())
        return "no contact";
    if (_isTouching)
        return fmt::format("the contact does not end: pad {}", letterOf(_contacts.back().images.back().pad));
    if (_beganBefore)
        return "the contact began too early";
    if (_contacts.size() > 1)
        return "more than one contact";
    return canBe(asked, _contacts.front()) ? "" : "the wrong region";
}

} // namespace VeltoTouch::Bench
