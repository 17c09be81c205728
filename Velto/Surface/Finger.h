#pragma once

#include "Plugin/Reports/InputReport.h"
#include "Velto/Surface/Geometry.h"
#include "Velto/Surface/Random.h"
#include "Velto/Surface/Step.h"

#include <array>
#include <optional>

// What a finger on the simulated surface does to the pads' signals.
//
// A contact is a smooth bump: strongest at its middle, about half as strong at its width from there. A pad feels the
// sum of the bump's heights at its plates. While a contact presses down and while it lifts, its strength rises and
// falls over a few images.
//
//   a contact's strength             the shares of a slide's two places
//         ___________                start  ________
//        /           \                              \_______
//   ____/             \____          end             ________
//     press         lift                    ________/
//
// A slide rests, rolls over and rests: the finger lies across both places while its weight goes from the one to the
// other, and does not touch what is between.
//
// Nothing here but additions, multiplications and divisions: the signals are the same on every machine.

namespace VeltoTouch::Surface {

using Strengths = std::array<double, kPadCount>;

struct Contact {
    Position position;
    double height; // strength in the middle, in counts of a pad with sensitivity 1
    double width;
};

// Adds what each pad feels of a contact that presses with this share of its height.
void addContact(Strengths& strengths, const Contact& contact, double share) noexcept;

// The contact of one step, from press to lift.
class Gesture {
public:
    // Puts the finger down near the step's place, a little elsewhere and with a little other strength every time. The
    // step is one with a contact (no idle, no reset).
    Gesture(const Step& step, Random& random);

    // What the pads feel `elapsedMs` after the contact began, if it lasts `durationMs` in all.
    [[nodiscard]] Strengths at(double elapsedMs, double durationMs) const noexcept;

private:
    Contact _start;
    std::optional<Contact> _end; // of a slide
    double _rampMs;
};

} // namespace VeltoTouch::Surface
