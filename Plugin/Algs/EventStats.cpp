#include "Plugin/Algs/EventStats.h"

#include <array>

namespace VeltoTouch {
namespace {

struct Counter {
    const char* name;
    std::uint64_t EventStats::*count;
};

// The last rows look swapped and are not: the dispatched counters have numHolding2Suppressed, the rejected ones
// numSuppressed2Holding.
constexpr std::array<Counter, 12> kDispatched{{
    {"numTaps", &EventStats::numTaps},
    {"numBeginHold", &EventStats::numBeginHold},
    {"numIncrementHold", &EventStats::numIncrementHold},
    {"numEndHold", &EventStats::numEndHold},
    {"numVolumeUp", &EventStats::numVolumeUp},
    {"numVolumeDown", &EventStats::numVolumeDown},
    {"numPlayPause", &EventStats::numPlayPause},
    {"numOrviCall", &EventStats::numOrviCall},
    {"numOrviCallIncrement", &EventStats::numOrviCallIncrement},
    {"numVolumeIncrement", &EventStats::numVolumeIncrement},
    {"numVolumeDecrement", &EventStats::numVolumeDecrement},
    {"numHolding2Suppressed", &EventStats::numHolding2Suppressed},
}};

constexpr std::array<Counter, 12> kRejected{{
    {"numRejectedTap", &EventStats::numRejectedTap},
    {"numRejectedBeginHold", &EventStats::numRejectedBeginHold},
    {"numRejectedIncrementHold", &EventStats::numRejectedIncrementHold},
    {"numRejectedEndHold", &EventStats::numRejectedEndHold},
    {"numRejectedVolumeUp", &EventStats::numRejectedVolumeUp},
    {"numRejectedVolumeDown", &EventStats::numRejectedVolumeDown},
    {"numRejectedPlayPause", &EventStats::numRejectedPlayPause},
    {"numRejectedOrviCall", &EventStats::numRejectedOrviCall},
    {"numRejectedOrviCallIncrement", &EventStats::numRejectedOrviCallIncrement},
    {"numRejectedVolumeIncrement", &EventStats::numRejectedVolumeIncrement},
    {"numRejectedVolumeDecrement", &EventStats::numRejectedVolumeDecrement},
    {"numSuppressed2Holding", &EventStats::numSuppressed2Holding},
}};

Ref<Dictionary> countsOf(const EventStats& stats, const std::array<Counter, 12>& counters) {
    std::vector<Dictionary::Entry> entries;
    entries.reserve(counters.size());
    for (const Counter& counter : counters)
        entries.push_back({.key = counter.name, .value = Number::withUnsignedLong(stats.*counter.count)});
    return makeRef<Dictionary>(std::move(entries));
}

} // namespace

// The first rule that holds counts.
void EventStats::update(const HandStats& hand) noexcept {
    if (hand.touching && !hand.wasTouching)
        return;
    if (hand.suppressingHold)
        countSuppressedHold(hand);
    else if (hand.holding)
        countHold(hand);
    else if (hand.wasHolding)
        ++numEndHold;
    else if (!hand.holdTimedOut && hand.wasHoldTimedOut)
        ++numRejectedEndHold;
    else if (hand.tapCandidate && !hand.tapDetected)
        countRejectedTap(hand.activeRegion);
    else if (hand.tapDetected)
        countTap(hand.activeRegion);
}

void EventStats::countSuppressedHold(const HandStats& hand) noexcept {
    if (hand.wasHolding)
        ++numHolding2Suppressed;
    if (hand.activeRegion == PixelRegion::VolumeDown)
        ++numRejectedVolumeDecrement;
    else if (hand.activeRegion == PixelRegion::VolumeUp)
        ++numRejectedVolumeIncrement;
    // A suppression that outlived the switch of hold suppression has no time-out to count.
    if (!hand.holdTimedOut)
        return;
    const bool timedOutNow = !hand.wasHoldTimedOut;
    ++(timedOutNow ? numRejectedBeginHold : numRejectedIncrementHold);
    if (hand.activeRegion == PixelRegion::PlayPause)
        ++(timedOutNow ? numRejectedOrviCall : numRejectedOrviCallIncrement);
}

void EventStats::countHold(const HandStats& hand) noexcept {
    if (hand.wasSuppressingHold && !hand.wasHolding)
        ++numSuppressed2Holding;
    ++(hand.wasHolding ? numIncrementHold : numBeginHold);
    if (hand.activeRegion == PixelRegion::PlayPause)
        ++(hand.wasHolding ? numOrviCallIncrement : numOrviCall);
    else if (hand.activeRegion == PixelRegion::VolumeDown)
        ++numVolumeDecrement;
    else if (hand.activeRegion == PixelRegion::VolumeUp)
        ++numVolumeIncrement;
}

void EventStats::countRejectedTap(PixelRegion region) noexcept {
    ++numRejectedTap;
    if (region == PixelRegion::PlayPause)
        ++numRejectedPlayPause;
    else if (region == PixelRegion::VolumeDown)
        ++numRejectedVolumeDown;
    else if (region == PixelRegion::VolumeUp)
        ++numRejectedVolumeUp;
}

void EventStats::countTap(PixelRegion region) noexcept {
    ++numTaps;
    if (region == PixelRegion::PlayPause)
        ++numPlayPause;
    else if (region == PixelRegion::VolumeDown)
        ++numVolumeDown;
    else if (region == PixelRegion::VolumeUp)
        ++numVolumeUp;
}

Ref<Dictionary> EventStats::statsDictionary() const {
    std::vector<Dictionary::Entry> entries;
    entries.push_back({.key = "Dispatched", .value = countsOf(*this, kDispatched)});
    entries.push_back({.key = "Rejected", .value = countsOf(*this, kRejected)});
    return makeRef<Dictionary>(std::move(entries));
}

} // namespace VeltoTouch
