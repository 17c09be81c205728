#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

// The counters that are not 0: "Dispatched numPlayPause 1, numTaps 1; Rejected".
std::string countsIn(const Ref<Value>& statistics) {
    std::string counts;
    for (const auto& [part, counters] : as<Dictionary>(statistics)->entries()) {
        counts += (counts.empty() ? "" : "; ") + part;
        const char* separator = " ";
        for (const auto& [name, number] : as<Dictionary>(counters)->entries()) {
            if (const auto count = as<Number>(number)->unsignedLongLongValue(); count != 0)
                counts += std::exchange(separator, ", ") + name + ' ' + std::to_string(count);
        }
    }
    return counts;
}

// One tap, two taps that are rejected, a hold of 10 frames and a suppressed one of 6, far enough apart.
TEST(EventStatsTest, CountsWhatBecameOfEachContact) {
    constexpr std::uint32_t kTimedOut = 51; // the first frame past the time-out
    const std::pair<PixelRegion, std::string> rows[]{
        {PlayPause, "Dispatched numBeginHold 1, numEndHold 1, numIncrementHold 9, numOrviCall 1, "
                    "numOrviCallIncrement 9, numPlayPause 1, numTaps 1; "
                    "Rejected numRejectedBeginHold 1, numRejectedEndHold 1, numRejectedIncrementHold 5, "
                    "numRejectedOrviCall 1, numRejectedOrviCallIncrement 5, numRejectedPlayPause 2, numRejectedTap 2"},
        {VolumeDown, "Dispatched numBeginHold 1, numEndHold 1, numIncrementHold 9, numTaps 1, "
                     "numVolumeDecrement 10, numVolumeDown 1; "
                     "Rejected numRejectedBeginHold 1, numRejectedEndHold 1, numRejectedIncrementHold 5, "
                     "numRejectedTap 2, numRejectedVolumeDecrement 6, numRejectedVolumeDown 2"},
        {VolumeUp, "Dispatched numBeginHold 1, numEndHold 1, numIncrementHold 9, numTaps 1, "
                   "numVolumeIncrement 10, numVolumeUp 1; "
                   "Rejected numRejectedBeginHold 1, numRejectedEndHold 1, numRejectedIncrementHold 5, "
                   "numRejectedTap 2, numRejectedVolumeIncrement 6, numRejectedVolumeUp 2"},
    };
    for (const auto& [region, counts] : rows) {
        TouchSurface surface;
        surface.at(1000).idle().finger(region).forFrames(8).lift();
        surface.at(5000).idle().brush(region).forFrames(45).lift();
        surface.at(10000).idle().brush(region).forFrames(45).lift();
        surface.at(15000).idle().finger(region).forFrames(kTimedOut + 10).lift();
        surface.at(20000).idle().brush(region).forFrames(kTimedOut + 6).lift().idle();
        EXPECT_EQ(countsIn(surface.get("EventStats")), counts) << nameOf(region);
    }
}

TEST(EventStatsTest, CountsTransitionsBetweenSuppressionAndHold) {
    TouchSurface recovering;
    recovering.at(1000).brush(PlayPause).forMs(550).set("ResetEventStats", true).press({{'E', 2000}}).forFrames(1);
    EXPECT_EQ(countsIn(recovering.get("EventStats")),
              "Dispatched numBeginHold 1, numOrviCall 1; Rejected numSuppressed2Holding 1");

    // Switched off, hold suppression leaves its flags behind: they count before the hold does.
    TouchSurface released;
    released.at(1000).brush(VolumeUp).forMs(550).set("ResetEventStats", true).set("EnableHoldSuppression", false);
    released.forFrames(2);
    EXPECT_EQ(countsIn(released.get("EventStats")), "Dispatched numHolding2Suppressed 1; Rejected "
                                                    "numRejectedIncrementHold 2, numRejectedVolumeIncrement 2");
}

TEST(EventStatsTest, SuppressionWithoutTimeoutCountsVolumeAlone) {
    HandStats hand;
    hand.touching = hand.wasTouching = hand.suppressingHold = true;
    EventStats stats;
    for (const PixelRegion region : {None, PlayPause, VolumeDown, VolumeUp}) {
        hand.activeRegion = region;
        stats.update(hand);
    }
    EXPECT_EQ(countsIn(stats.statsDictionary()),
              "Dispatched; Rejected numRejectedVolumeDecrement 1, numRejectedVolumeIncrement 1");
}

TEST(EventStatsTest, DictionaryIsACompleteSnapshotUntilReset) {
    TouchSurface surface;
    surface.at(1000).finger(PlayPause).forMs(80).lift();
    const auto snapshot = surface.get("EventStats");
    for (const auto& [part, counters] : as<Dictionary>(snapshot)->entries())
        EXPECT_THAT(as<Dictionary>(counters)->entries(), testing::SizeIs(12)) << part;
    surface.set("ResetEventStats", nullptr);
    EXPECT_EQ(countsIn(surface.get("EventStats")), "Dispatched; Rejected");
    EXPECT_EQ(countsIn(snapshot), "Dispatched numPlayPause 1, numTaps 1; Rejected");
}

} // namespace
} // namespace VeltoTouch::Tests
