#include "Velto/Surface/Finger.h"

#include <algorithm>

namespace VeltoTouch::Surface {
namespace {

// How a kind of contact varies from one time to the next: its middle by up to `spread` in x and y, its height between
// `low` and `high`.
struct Style {
    double low;
    double high;
    double width;
    double spread;
    double rampMs; // press, and lift
};

//                          height        width spread ramp
constexpr Style kPressStyle{540.0, 660.0, 3.8, 0.6, 30.0};
// Stays below what turns a pad or a group of pads on.
constexpr Style kBrushStyle{110.0, 160.0, 3.8, 0.6, 30.0};
// Lays many pads above noise and turns few of them on.
constexpr Style kPalmStyle{96.0, 102.0, 30.0, 1.0, 40.0};

// When a slide rolls over, and for how long at most. A slide of 900 ms or more is a hold by then.
constexpr double kRollStartShare = 0.6;
constexpr double kRollMs = 120.0;
constexpr double kLongestRollShare = 0.2;

constexpr const Style& styleOf(Action action) noexcept {
    return action == Action::Palm ? kPalmStyle : action == Action::Brush ? kBrushStyle : kPressStyle;
}

// From 0 at 0 to 1 at 1, flat at both ends.
constexpr double smoothStep(double x) noexcept {
    const double t = std::clamp(x, 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

Contact contactAt(Position position, const Style& style, Random& random) {
    const double dx = random.within(-style.spread, style.spread);
    const double dy = random.within(-style.spread, style.spread);
    return {.position = {.x = position.x + dx, .y = position.y + dy},
            .height = random.within(style.low, style.high),
            .width = style.width};
}

// Of a pad's two plates the one that is closer to where the finger is.
Position nearestPlace(std::size_t pad, Position from) {
    const auto isNearer = [from](const Place& a, const Place& b) {
        return squaredDistance(a.position, from) < squaredDistance(b.position, from);
    };
    return std::ranges::min_element(placesOf(pad), isNearer)->position;
}

Position startOf(const Step& step, Random& random) {
    if (step.action == Action::Palm)
        return {.x = 0.0, .y = 0.0};
    const auto plates = placesOf(step.pad);
    return plates[random.below(static_cast<std::uint32_t>(plates.size()))].position;
}

} // namespace

void addContact(Strengths& strengths, const Contact& contact, double share) noexcept {
    for (const Place& place : places()) {
        const double distance = squaredDistance(place.position, contact.position) / (contact.width * contact.width);
        const double falloff = 1.0 + distance / 2.0;
        strengths[place.pad] += share * contact.height / (falloff * falloff);
    }
}

Gesture::Gesture(const Step& step, Random& random)
    : _start(contactAt(startOf(step, random), styleOf(step.action), random)), _rampMs(styleOf(step.action).rampMs) {
    if (step.action == Action::Slide)
        _end = contactAt(nearestPlace(step.endPad, _start.position), styleOf(step.action), random);
}

Strengths Gesture::at(double elapsedMs, double durationMs) const noexcept {
    const double ramp = std::min(_rampMs, durationMs / 3.0);
    const double press = smoothStep(elapsedMs / ramp) * smoothStep((durationMs - elapsedMs) / ramp);
    Strengths strengths{};
    if (!_end) {
        addContact(strengths, _start, press);
        return strengths;
    }
    // Half-way both places bear three quarters, so that the finger never seems to lift.
    const double rollMs = std::min(kRollMs, durationMs * kLongestRollShare);
    const double rolled = smoothStep((elapsedMs - durationMs * kRollStartShare) / rollMs);
    addContact(strengths, _start, press * (1.0 - rolled * rolled));
    addContact(strengths, *_end, press * (1.0 - (1.0 - rolled) * (1.0 - rolled)));
    return strengths;
}

} // namespace VeltoTouch::Surface
