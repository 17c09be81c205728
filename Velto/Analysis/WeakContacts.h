#pragma once

#include "Velto/Analysis/Touch.h"
#include "Velto/Analysis/Track.h"

#include <vector>

namespace VeltoTouch::Analysis {

// Finds the contacts that were too weak to become touches: a stretch of frames above noise in which no pixel is on, and
// in which a pixel was pressed, that is, rose by more than the noise floor above its lowest value before, and reached
// half of the level that it had to exceed. A stretch that ends in a touch is that touch's beginning, and the fall at
// the end of a touch is no press.
class WeakContacts {
public:
    // Takes in a frame, in order. The recognizer is as it stands after it.
    void frame(const Track::Step& step, const Algs& algs);

    // Ends the observation and returns the contacts in their order. A stretch in progress ends at the last frame.
    [[nodiscard]] std::vector<WeakContact> finish();

private:
    void begin(const Track::Step& step);
    void look(const Algs& algs);
    void followLowest(const Algs& algs);
    void end(std::uint64_t ns, std::uint32_t frame);

    std::vector<WeakContact> _contacts;
    bool _isAboveNoise = false; // a stretch is in progress
    WeakContact _contact;
    float _reached = 0; // highest share of its level that a pressed pixel reached
    // Normalized values that a press rises from: the lowest in a stretch, before it the trough or the touch's last.
    Pixels::Lanes<float> _lowestOfPads{};
    VirtualPixels::Lanes<float> _lowestOfGroups{};
    Track::Step _lastStep;
};

// Plays a track and returns its weak contacts.
[[nodiscard]] std::vector<WeakContact> weakContactsOf(const Track& track, const std::vector<Setting>& settings);

} // namespace VeltoTouch::Analysis
