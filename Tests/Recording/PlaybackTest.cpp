#include "Platform/Clock.h"
#include "Tests/Support/Frames.h"

#include <limits>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::Ge;
using testing::SizeIs;
using testing::ThrowsMessage;

constexpr float kAtOnce = std::numeric_limits<float>::infinity();
constexpr std::uint64_t kMs = 1'000'000; // in nanoseconds

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
    // What was played since the last question, its times counted from the start of playback.
    std::vector<std::string> played() const {
        std::vector<Frame> calls = std::exchange(log->calls, {});
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

TEST_F(PlaybackTest, FramesKeepTheirSpacingAtAnySpeed) {
    record({setting("k", json("[1]"), 700), reportFrame({1, 2}, 10 * kMs + 700), metadata("m", nullptr, 0),
            reportFrame({}, 1'000'000'000 * kMs)});
    const std::uint64_t before = mach_absolute_time();
    recording.playReset();
    EXPECT_THAT(recording.playStartTime(), Ge(before));
    playFrames(3, 2);
    EXPECT_THAT(mach_absolute_time() - before, Ge(5 * kMs)) << "10 ms at twice the speed";
    playFrames(1, kAtOnce);
    EXPECT_THAT(played(), ElementsAre("k=[1]@0", "[01 02]@10000000", "m:@18446744073709550916", "[]@999999999999300"))
        << "a time before the first frame's wraps";
    EXPECT_THAT(recording.frames(), SizeIs(4)) << "played frames are not recorded";
    expectNothingToPlay();

    recording.playReset();
    playFrames(1);
    EXPECT_THAT(played(), ElementsAre("k=[1]@0")) << "from the first frame again, anchored anew";
    recording.handleMetadata(1, "m", nullptr);
    expectNothingToPlay(); // what is recorded ends the playback
}

// The list is a=1 [01] a=2 [02] a=3 [03]; what trimming leaves of it follows from the bound.
TEST_F(PlaybackTest, EndsWhenACutTakesOutTheNextFrame) {
    struct Row {
        const char* name;
        int played; // frames before the cut
        std::function<void()> cut;
        std::vector<std::string> next; // played next; none where playback has ended
    };
    for (const auto& [name, playedBefore, cut, next] : {
             Row{"bound takes it out", 0, [&] { recording.setMaxFrameCount(1); }, {}},
             Row{"bound takes out others", 4, [&] { recording.setMaxFrameCount(1); }, {"a=3@0"}},
             Row{"trim takes it out", 3, [&] { recording.trimFrames(1); }, {}},
             Row{"trim takes out others", 3, [&] { recording.trimFrames(2); }, {"[02]@0"}},
             Row{"trim of everything at the end", 6, [&] { recording.trimFrames(0); }, {}},
             Row{"writing without a bound takes out nothing", 0, [&] { EXPECT_TRUE(recording.json()); }, {"a=1@0"}},
             Row{"sorting takes out nothing", 2, [&] { recording.sortFrames(); }, {"a=2@0"}},
         }) {
        SCOPED_TRACE(name);
        recording = PipelineRecording();
        recording.pipeline = log;
        for (std::uint8_t i = 1; i <= 3; ++i)
            record({setting("a", Number::withUnsignedLong(i)), reportFrame({i})});
        recording.playReset();
        playFrames(playedBefore);
        log->calls.clear();
        cut();
        if (next.empty())
            expectNothingToPlay();
        else if (recording.playCanContinue())
            playFrames(1);
        EXPECT_EQ(played(), next);
    }
}

TEST(PlaybackPauseTest, IsTheGapInMicrosecondsDividedBySpeed) {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
    struct Row {
        const char* name;
        std::uint64_t fromNs, toNs;
        float speed;
        std::uint64_t pauseUs;
    };
    for (const auto& [name, fromNs, toNs, speed, pauseUs] : {
             Row{"half as fast", 10 * kMs, 30 * kMs, 0.5, 40'000},
             Row{"divides by the speed first", 0, 6900 * kMs, 3, 2'300'000},
             Row{"speed zero is one", 0, 10 * kMs, 0, 10'000},
             Row{"minus infinity is one", 0, 10 * kMs, -kAtOnce, 10'000},
             Row{"earlier time", 5 * kMs, 3 * kMs, 1, 0},
             // 100000001999 ns are 99999997952 in single precision, and 99999997.952 us are 100000000
             Row{"single precision", 0, 100'000'001'999, 1, 100'000'000},
             Row{"beyond all numbers", 0, kLargest, std::numeric_limits<float>::denorm_min(), kLargest},
         })
        EXPECT_EQ(Player::pauseUs(fromNs, toNs, speed), pauseUs) << name;
}

} // namespace
} // namespace VeltoTouch::Tests
