#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

using testing::SizeIs;

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

TEST(EventStatsTest, CountsWhatBecameOfEachFrame) {
    constexpr std::uint32_t kTimedOut = 51; // the first frame past the time-out
    struct Row {
        const char* name;
        TouchSurface& (TouchSurface::*contact)(PixelRegion);
        PixelRegion region;
        std::uint32_t frames;
        std::string counts;
    };
    const std::string rejectedHold = "Dispatched; Rejected numRejectedBeginHold 1, numRejectedEndHold 1, "
                                     "numRejectedIncrementHold 5, ";
    const std::string hold = "Dispatched numBeginHold 1, numEndHold 1, numIncrementHold 9, ";
    const auto finger = &TouchSurface::finger;
    const auto brush = &TouchSurface::brush;
    for (const Row& row : {
             Row{"tap", finger, PlayPause, 8, "Dispatched numPlayPause 1, numTaps 1; Rejected"},
             Row{"tap", finger, VolumeDown, 8, "Dispatched numTaps 1, numVolumeDown 1; Rejected"},
             Row{"tap", finger, VolumeUp, 8, "Dispatched numTaps 1, numVolumeUp 1; Rejected"},
             Row{"hold", finger, PlayPause, kTimedOut + 10, hold + "numOrviCall 1, numOrviCallIncrement 9; Rejected"},
             Row{"hold", finger, VolumeDown, kTimedOut + 10, hold + "numVolumeDecrement 10; Rejected"},
             Row{"hold", finger, VolumeUp, kTimedOut + 10, hold + "numVolumeIncrement 10; Rejected"},
             Row{"rejected tap", brush, PlayPause, 45, "Dispatched; Rejected numRejectedPlayPause 1, numRejectedTap 1"},
             Row{"rejected tap", brush, VolumeDown, 45,
                 "Dispatched; Rejected numRejectedTap 1, numRejectedVolumeDown 1"},
             Row{"rejected tap", brush, VolumeUp, 45, "Dispatched; Rejected numRejectedTap 1, numRejectedVolumeUp 1"},
             Row{"suppressed hold", brush, PlayPause, kTimedOut + 6,
                 rejectedHold + "numRejectedOrviCall 1, numRejectedOrviCallIncrement 5"},
             Row{"suppressed hold", brush, VolumeDown, kTimedOut + 6, rejectedHold + "numRejectedVolumeDecrement 6"},
             Row{"suppressed hold", brush, VolumeUp, kTimedOut + 6, rejectedHold + "numRejectedVolumeIncrement 6"},
         }) {
        TouchSurface surface;
        (surface.at(1000).idle().*row.contact)(row.region).forFrames(row.frames).lift().idle();
        EXPECT_EQ(countsIn(surface.get("EventStats")), row.counts) << row.name << ' ' << nameOf(row.region);
    }
}

TEST(EventStatsTest, CountsTransitionsBetweenSuppressionAndHold) {
    TouchSurface recovering;
    recovering.at(1000).brush(PlayPause).forMs(550).set("ResetEventStats", 0).press({{'E', 2000}}).forFrames(1);
    EXPECT_EQ(countsIn(recovering.get("EventStats")),
              "Dispatched numBeginHold 1, numOrviCall 1; Rejected numSuppressed2Holding 1");

    // Switched off, hold suppression leaves its flags behind: they count before the hold does.
    TouchSurface released;
    released.at(1000).brush(VolumeUp).forMs(550).set("ResetEventStats", 0).set("EnableHoldSuppression", false);
    released.forFrames(2);
    EXPECT_EQ(countsIn(released.get("EventStats")), "Dispatched numHolding2Suppressed 1; Rejected "
                                                    "numRejectedIncrementHold 2, numRejectedVolumeIncrement 2");
    released.set("ResetEventStats", 0).set("EnableHoldSuppression", true).forFrames(1);
    EXPECT_EQ(countsIn(released.get("EventStats")), "Dispatched numIncrementHold 1, numVolumeIncrement 1; Rejected");
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
        EXPECT_THAT(as<Dictionary>(counters)->entries(), SizeIs(12)) << part;
    surface.set("ResetEventStats", nullptr);
    EXPECT_EQ(countsIn(surface.get("EventStats")), "Dispatched; Rejected");
    EXPECT_EQ(countsIn(snapshot), "Dispatched numPlayPause 1, numTaps 1; Rejected");
}

} // namespace
} // namespace VeltoTouch::Tests
