#include "Velto/Analysis/StreamStatistics.h"
#include "Tests/Support/Frames.h"
#include "Tests/Support/Reports.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using Analysis::StreamStatistics;

class StreamStatisticsTest : public testing::Test {
public:
    // A report, `ms` after the one before.
    void report(std::uint64_t ms, const Report& report) {
        _ns += ms * 1'000'000;
        _recording.appendFrame(reportFrame(report, _ns));
    }
    void image(std::uint64_t ms, std::uint32_t frame, PadSignals signals) {
        report(ms, imageReport(makeImage(frame, frame * 10, signals)));
    }
    void append(const Frame& frame) { _recording.appendFrame(frame); }

    StreamStatistics statistics() {
        return Analysis::statisticsOf(_recording, [] {});
    }

    std::string padText(char pad) {
        const StreamStatistics found = statistics();
        const auto& figures = found.pads.at(padOf(pad));
        const auto rest = figures.rest();
        return fmt::format("{} {} {}", rest ? rest->baseline : -1, rest ? rest->noise : -1,
                           figures.peak().value_or(-1));
    }

private:
    std::uint64_t _ns = 5'000'000'000;
    PipelineRecording _recording;
};

TEST_F(StreamStatisticsTest, CountsWhatWasCountedByHand) {
    append(metadata("Label", nullptr, 4'000'000'000)); // the first frame, 1 s before the first report
    image(0, 7, {{'A', 3}, {'B', -9}});
    image(10, 8, {{'A', 1}});
    image(10, 9, {{'A', 2}, {'K', 600}}); // on: not at rest
    image(10, 12, {{'A', 9}});            // a gap
    report(40, {0x03, 0x00});             // invalid
    report(0, {});
    report(10, firmwareEventReport(1)); // no reset
    report(10, firmwareEventReport(InputReport::FirmwareEvent::kReset));
    image(20, 13, {{'A', 3}});

    const StreamStatistics found = statistics();
    EXPECT_EQ(found.reports, 9U);
    EXPECT_DOUBLE_EQ(*found.rateHz, 8 / 0.110);
    // Sorted: 0 10 10 10 10 10 20 40 ms; of eight the median is the fourth, 99 % the eighth.
    EXPECT_EQ(found.intervals->median, 10'000'000U);
    EXPECT_EQ(found.intervals->p99, 40'000'000U);
    EXPECT_EQ(found.intervals->longest, 40'000'000U);

    std::string disturbances;
    for (const auto& disturbance : found.disturbances)
        disturbances += fmt::format("{}@{} {} ", static_cast<int>(disturbance.kind),
                                    disturbance.time.count() / 1'000'000, disturbance.report.size());
    EXPECT_EQ(disturbances, "1@1030 0 0@1070 2 0@1070 0 2@1090 0 ");

    // A at rest: 3 1 9 3, median 3 (the second of 1 3 3 9); distances 0 0 2 6, 68 % of four is the third.
    EXPECT_EQ(padText('A'), "3 2 9");
    EXPECT_EQ(padText('B'), "0 0 0");
    EXPECT_EQ(padText('K'), "0 0 600");
}

// Of 100 the 99th, which a single longer one does not reach; of 160 the 159th, 158.4 rounded up.
TEST_F(StreamStatisticsTest, TakesTheNearestRank) {
    for (std::uint32_t frame = 0; frame <= 100; ++frame)
        image(frame < 100 ? 10 : 120, frame, {});
    EXPECT_EQ(statistics().intervals->p99, 10'000'000U);
    for (std::uint32_t frame = 101; frame <= 160; ++frame)
        image(frame < 160 ? 10 : 180, frame, {});
    EXPECT_EQ(statistics().intervals->p99, 120'000'000U);
}

TEST_F(StreamStatisticsTest, SaysNothingOfWhatItDoesNotKnow) {
    EXPECT_FALSE(statistics().intervals);
    EXPECT_EQ(padText('A'), "-1 -1 -1");
    image(0, 1, {{'K', 600}}); // on from the first image on
    EXPECT_FALSE(statistics().rateHz || statistics().intervals);
    EXPECT_EQ(padText('K'), "-1 -1 600");
    image(0, 2, {{'K', 600}});
    EXPECT_FALSE(statistics().rateHz) << "no time between them";
    EXPECT_EQ(statistics().intervals->longest, 0U);
}

} // namespace
} // namespace VeltoTouch::Tests
