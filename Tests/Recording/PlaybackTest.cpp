#include "Recording/PipelineRecording.h"

#include "Platform/Clock.h"
#include "Tests/Support/Frames.h"

#include <limits>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::SizeIs;
using testing::ThrowsMessage;

constexpr float kAtOnce = std::numeric_limits<float>::infinity();
constexpr std::uint64_t kMs = 1'000'000; // in nanoseconds
constexpr std::uint64_t kYear = kMs * 1000 * 3600 * 24 * 365;

class PlaybackTest : public testing::Test {
protected:
    PlaybackTest() { recording.pipeline = log; }

    void record(std::initializer_list<Frame> frames) {
        for (const Frame& frame : frames)
            recording.appendFrame(frame);
    }
    void playFrames(int count, float speed = kAtOnce) {
        for (int i = 0; i < count; ++i)
            recording.playNextFrame(speed);
    }
    // What was played, its times counted from the start of playback.
    std::vector<std::string> played() const {
        std::vector<Frame> calls = log->calls;
        for (Frame& call : calls)
            call.timestampNs -= recording.playStartTime();
        return textsOf(calls);
    }
    void expectNothingToPlay() {
        EXPECT_FALSE(recording.playCanContinue());
        EXPECT_THAT([this] { recording.playNextFrame(1); }, ThrowsMessage<std::runtime_error>("playback finished"));
    }

    const std::shared_ptr<CallLog> log = std::make_shared<CallLog>();
    PipelineRecording recording;
};

TEST_F(PlaybackTest, FramesComeInOrderWithTheirRecordedSpacingWhateverTheSpeed) {
    record({setting("k", json("[1]"), 700), reportFrame({1, 2}, 10 * kMs + 700), metadata("m", nullptr, 30 * kMs + 700),
            reportFrame({}, kYear)});
    const std::uint64_t before = mach_absolute_time();
    recording.playReset();
    EXPECT_THAT(recording.playStartTime(), Ge(before));
    playFrames(3, 1000);
    playFrames(1, kAtOnce);
    EXPECT_THAT(played(),
                ElementsAre("k=[1]@0", "[01 02]@10000000", "m:@30000000", "[]@" + std::to_string(kYear - 700)));
    EXPECT_EQ(log->calls[0].value, recording.frames().front().value) << "the object itself, no copy of it";
    EXPECT_THAT(recording.frames(), SizeIs(4)) << "played frames are not recorded";
    expectNothingToPlay();

    log->calls.clear();
    recording.playReset();
    playFrames(1);
    EXPECT_THAT(played(), ElementsAre("k=[1]@0")) << "from the first frame again, anchored anew";
}

TEST_F(PlaybackTest, AFrameEarlierThanTheFirstIsPlayedAtOnceWithATimeThatWraps) {
    record({reportFrame({1}, 5), reportFrame({2}, 3), reportFrame({3}, 5)});
    recording.playReset();
    playFrames(3, 1);
    EXPECT_THAT(played(), ElementsAre("[01]@0", "[02]@18446744073709551614", "[03]@0"));
}

TEST_F(PlaybackTest, TheWaitIsMeasuredFromTheFrameBeforeEvenWhenTimeWentBack) {
    record({reportFrame({1}, 20 * kMs), reportFrame({2}, 0), reportFrame({3}, 10 * kMs)});
    recording.playReset();
    playFrames(3, 2);
    EXPECT_THAT(mach_absolute_time() - recording.playStartTime(), Ge(5 * kMs));
}

TEST_F(PlaybackTest, WaitsAtLeastAsLongAsTheRecordDividedBySpeed) {
    record({reportFrame({1}, 0), reportFrame({2}, 10 * kMs), reportFrame({3}, 30 * kMs)});
    recording.playReset();
    std::vector<std::uint64_t> times;
    log->whenCalled = [&] { times.push_back(mach_absolute_time()); };
    playFrames(3, 2);
    EXPECT_THAT(times[1] - times[0], Ge(5 * kMs));
    EXPECT_THAT(times[2] - times[1], Ge(10 * kMs));
}

TEST_F(PlaybackTest, WithoutATargetFramesCountAsPlayed) {
    record({reportFrame({1}), reportFrame({2})});
    recording.pipeline.reset();
    recording.playReset();
    playFrames(2);
    expectNothingToPlay();
    EXPECT_THAT(log->calls, IsEmpty());
}

TEST_F(PlaybackTest, AnAppendedFrameEndsThePlaybackUntilTheNextReset) {
    expectNothingToPlay();
    recording.playReset();
    expectNothingToPlay();

    record({reportFrame({1}), reportFrame({2})});
    expectNothingToPlay();
    recording.playReset();
    playFrames(1);
    const std::uint8_t report = 3;
    recording.handleInputReport(1, &report, 1);
    expectNothingToPlay();
    recording.playReset();
    EXPECT_TRUE(recording.playCanContinue());
}

// The list is a=1 [01] a=2 [02] a=3 [03]; what trimming leaves of it follows from the bound.
struct Cut {
    const char* name;
    int played; // frames before the cut
    std::function<void(PipelineRecording&)> cut;
    const char* next; // the frame that is played next; empty where playback has ended
};
void PrintTo(const Cut& row, std::ostream* out) { *out << row.name; }

class CutPlaybackTest : public PlaybackTest, public testing::WithParamInterface<Cut> {};

TEST_P(CutPlaybackTest, EndsOnlyWhenTheFrameAtThePositionIsTakenOut) {
    for (std::uint8_t i = 1; i <= 3; ++i)
        record({setting("a", Number::withUnsignedLong(i)), reportFrame({i})});
    recording.playReset();
    playFrames(GetParam().played);
    log->calls.clear();
    GetParam().cut(recording);
    if (std::string_view(GetParam().next).empty())
        return expectNothingToPlay();
    ASSERT_TRUE(recording.playCanContinue());
    playFrames(1);
    EXPECT_THAT(played(), ElementsAre(GetParam().next));
}

template <std::uint64_t Count>
void bound(PipelineRecording& recording) {
    recording.setMaxFrameCount(Count);
}
template <std::uint64_t Count>
void trim(PipelineRecording& recording) {
    recording.trimFrames(Count);
}
void write(PipelineRecording& recording) { EXPECT_TRUE(recording.json()); }
void sort(PipelineRecording& recording) { recording.sortFrames(); }

INSTANTIATE_TEST_SUITE_P(
    Positions, CutPlaybackTest,
    testing::Values(Cut{"BoundTakesItOut", 0, bound<1>, ""}, Cut{"BoundTakesOutOthers", 4, bound<1>, "a=3@0"},
                    Cut{"NoBoundTakesOutNothing", 0, bound<0>, "a=1@0"}, Cut{"TrimTakesItOut", 3, trim<1>, ""},
                    Cut{"TrimTakesOutOthers", 3, trim<2>, "[02]@0"}, Cut{"TrimOfEverythingAtTheEnd", 6, trim<0>, ""},
                    Cut{"WritingWithoutABoundTakesOutNothing", 0, write, "a=1@0"},
                    Cut{"SortingTakesOutNothing", 2, sort, "a=2@0"}),
    [](const auto& row) { return row.param.name; });

TEST_F(PlaybackTest, WritingTrimsToTheBoundAndEndsThePlaybackOfWhatItTakesOut) {
    recording.setMaxFrameCount(2);
    record({reportFrame({1}), reportFrame({2}), reportFrame({3})});
    recording.playReset();
    write(recording);
    expectNothingToPlay();

    recording.appendFrame(reportFrame({4}));
    recording.playReset();
    playFrames(1);
    log->calls.clear();
    write(recording);
    playFrames(1);
    EXPECT_THAT(played(), ElementsAre("[03]@0"));
}

struct Pause {
    const char* name;
    std::uint64_t fromNs;
    std::uint64_t toNs;
    float speed;
    std::uint64_t pauseUs;
};
void PrintTo(const Pause& row, std::ostream* out) { *out << row.name; }

class PlaybackPauseTest : public testing::TestWithParam<Pause> {};

TEST_P(PlaybackPauseTest, IsTheGapInMicrosecondsDividedBySpeed) {
    EXPECT_EQ(PipelineRecording::playbackPauseUs(GetParam().fromNs, GetParam().toNs, GetParam().speed),
              GetParam().pauseUs);
}

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();

INSTANTIATE_TEST_SUITE_P(
    Pauses, PlaybackPauseTest,
    testing::Values(Pause{"TwiceAsFast", 10 * kMs, 30 * kMs, 2, 10'000},
                    Pause{"HalfAsFast", 10 * kMs, 30 * kMs, 0.5, 40'000},
                    Pause{"SpeedZeroIsOne", 0, 10 * kMs, 0, 10'000},
                    Pause{"NegativeSpeedIsOne", 0, 10 * kMs, -2, 10'000},
                    Pause{"NoNumberIsOne", 0, 10 * kMs, std::numeric_limits<float>::quiet_NaN(), 10'000},
                    Pause{"InfiniteSpeedNeverWaits", 0, kLargest, kAtOnce, 0},
                    Pause{"MinusInfinityIsOne", 0, 10 * kMs, -kAtOnce, 10'000}, Pause{"SameTime", 5, 5, 1, 0}, //
                    Pause{"EarlierTime", 5 * kMs, 3 * kMs, 1, 0}, Pause{"BelowAMicrosecond", 0, 999, 1, 0},    //
                    Pause{"TruncatedTowardZero", 0, 1999, 1, 1},
                    // 100000001999 ns are 99999997952 in single precision, and 99999997.952 us are 100000000
                    Pause{"SinglePrecision", 0, 100'000'001'999, 1, 100'000'000},
                    Pause{"LongestGap", 0, kLargest, 1, 18'446'744'949'882'880U},
                    Pause{"BeyondAllNumbers", 0, kLargest, std::numeric_limits<float>::denorm_min(), kLargest}),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace VeltoTouch::Tests
