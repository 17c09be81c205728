#pragma once
#include "Tests/Reference/Hand.h"
#include "Tests/Reference/Value.h"
#include <map>
namespace VeltoTouch::Reference {
struct EventStats {
    using Names = std::vector<std::string>;
    using Counters = std::map<std::string, std::uint64_t>;
    Counters dispatched = zeros({"numTaps", "numBeginHold", "numIncrementHold", "numEndHold", "numHolding2Suppressed",
                                 "numVolumeUp", "numVolumeIncrement", "numVolumeDown", "numVolumeDecrement",
                                 "numPlayPause", "numOrviCall", "numOrviCallIncrement"});
    Counters rejected = zeros({"numRejectedTap", "numRejectedBeginHold", "numRejectedIncrementHold",
                               "numRejectedEndHold", "numSuppressed2Holding", "numRejectedVolumeUp",
                               "numRejectedVolumeIncrement", "numRejectedVolumeDown", "numRejectedVolumeDecrement",
                               "numRejectedPlayPause", "numRejectedOrviCall", "numRejectedOrviCallIncrement"});
    static Counters zeros(const Names& names) {
        Counters counters;
        for (const std::string& name : names)
            counters[name] = 0;
        return counters;
    }
    // Adds 1 to the first counter named, and to the one named for the region in region order. "" is no counter.
    static void count(Counters& counters, PixelRegion region, const Names& names) {
        if (names.at(0) != "")
            ++counters.at(names.at(0));
        if (region != PixelRegion::None && names.at(std::size_t(region)) != "")
            ++counters.at(names.at(std::size_t(region)));
    }
    void Reset() { *this = EventStats(); }
    void update(const HandStats& hand) {
        const PixelRegion r = hand.activeRegion;
        const std::string down = "numVolumeDecrement", up = "numVolumeIncrement";
        const std::string noDown = "numRejectedVolumeDecrement", noUp = "numRejectedVolumeIncrement";
        if (hand.touching && !hand.wasTouching)
            return;
        if (hand.suppressingHold && hand.wasHolding)
            count(dispatched, r, {"numHolding2Suppressed", "", "", ""});
        if (!hand.suppressingHold && hand.holding && !hand.wasHolding && hand.wasSuppressingHold)
            count(rejected, r, {"numSuppressed2Holding", "", "", ""});
        if (hand.suppressingHold && !hand.holdTimedOut)
            count(rejected, r, {"", "", noDown, noUp});
        else if (hand.suppressingHold && !hand.wasHoldTimedOut)
            count(rejected, r, {"numRejectedBeginHold", "numRejectedOrviCall", noDown, noUp});
        else if (hand.suppressingHold)
            count(rejected, r, {"numRejectedIncrementHold", "numRejectedOrviCallIncrement", noDown, noUp});
        else if (hand.holding && hand.wasHolding)
            count(dispatched, r, {"numIncrementHold", "numOrviCallIncrement", down, up});
        else if (hand.holding)
            count(dispatched, r, {"numBeginHold", "numOrviCall", down, up});
        else if (hand.wasHolding)
            count(dispatched, r, {"numEndHold", "", "", ""});
        else if (!hand.holdTimedOut && hand.wasHoldTimedOut)
            count(rejected, r, {"numRejectedEndHold", "", "", ""});
        else if (hand.tapCandidate && !hand.tapDetected)
            count(rejected, r,
                  {"numRejectedTap", "numRejectedPlayPause", "numRejectedVolumeDown", "numRejectedVolumeUp"});
        else if (hand.tapDetected)
            count(dispatched, r, {"numTaps", "numPlayPause", "numVolumeDown", "numVolumeUp"});
    }
    json statsDictionary() const { return json::object({{"Dispatched", dispatched}, {"Rejected", rejected}}); }
};
} // namespace VeltoTouch::Reference
