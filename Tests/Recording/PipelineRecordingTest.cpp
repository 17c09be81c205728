#include "Plugin/Recording/RecordingCopy.h"
#include "Tests/Support/Frames.h"

#include <limits>
#include <vector>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

class RecordingTest : public testing::Test {
protected:
    RecordingTest() { recording.pipeline = log; }

    const std::shared_ptr<CallLog> log = std::make_shared<CallLog>();
    PipelineRecording recording;
};

TEST_F(RecordingTest, CopiesAndMovesKeepTargetAndBoundNotPlayback) {
    recording.setMaxFrameCount(1);
    recording.appendFrame(metadata("m", json("[1,2]")));
    recording.playReset();
    const auto expectTaken = [this](PipelineRecording& taken, const char* how) {
        SCOPED_TRACE(how);
        EXPECT_FALSE(taken.playCanContinue());
        EXPECT_EQ(taken.pipeline, log);
        EXPECT_THAT(textsOf(taken.frames()), ElementsAre("m:[1,2]@0"));
    };
    const auto expectRecords = [](PipelineRecording& usable) {
        EXPECT_FALSE(usable.playCanContinue());
        usable.appendFrame(reportFrame({3}));
        EXPECT_THAT(textsOf(usable.frames()), ElementsAre("[03]@0")); // of a copy by its bound
    };
    PipelineRecording constructed(recording);
    PipelineRecording assigned;
    assigned.appendFrame(setting("old", json("1")));
    assigned.playReset();
    assigned = recording;
    expectTaken(constructed, "copied");
    expectTaken(assigned, "assigned");
    EXPECT_EQ(assigned.frames().back().value, recording.frames().back().value) << "values are shared";
    EXPECT_TRUE(recording.playCanContinue()) << "the original is not touched";
    expectRecords(assigned);

    // NOLINTBEGIN(bugprone-use-after-move): that a moved-from recording can be used is what is tested
    constructed.playReset();
    PipelineRecording moved(std::move(constructed));
    expectTaken(moved, "moved");
    expectRecords(constructed);
    moved.playReset();
    assigned = std::move(moved);
    expectTaken(assigned, "moved by assignment");
    expectRecords(moved);
    expectRecords(assigned);
    // NOLINTEND(bugprone-use-after-move)
}

TEST_F(RecordingTest, KeepsAFrameBeforeThePipelineSeesItAndHandsOnTheValueItself) {
    std::vector<std::size_t> kept;
    log->whenCalled = [&] { kept.push_back(recording.frames().size()); };
    const Ref<Value> value = json("[1]");
    recording.setState(1, "k", value);
    recording.handleMetadata(2, "m", value);
    recording.handleInputReport(3, nullptr, 0);
    EXPECT_THAT(kept, ElementsAre(1U, 2U, 3U));
    recording.playReset();
    for (int i = 0; i < 2; ++i)
        recording.playNextFrame(std::numeric_limits<float>::infinity());
    ASSERT_EQ(log->calls.size(), 5U);
    for (const std::size_t i : {0U, 1U, 3U, 4U})
        EXPECT_EQ(log->calls[i].value, value) << i;
}

// An exception in them, which can only be one of memory, ends the process.
TEST_F(RecordingTest, NothingThrowsButPlayingAndReading) {
    std::list<Frame> frames;
    Frame frame;
    const std::string key;
    const Ref<Value> value;
    EXPECT_TRUE(noexcept(recording.setState(0, key, value))&& noexcept(recording.handleMetadata(0, key, value)));
    EXPECT_TRUE(noexcept(recording.handleInputReport(0, nullptr, 0))&& noexcept(recording.json()));
    EXPECT_TRUE(noexcept(recording.appendFrame(std::move(frame)))&& noexcept(recording.setMaxFrameCount(0)));
    EXPECT_TRUE(noexcept(PipelineRecording::trimFrames(frames, 0))&& noexcept(recording.trimFrames(0)));
    EXPECT_TRUE(noexcept(PipelineRecording::sortFrames(frames))&& noexcept(recording.sortFrames()));
    EXPECT_TRUE(noexcept(recording.playReset())&& noexcept(recording.playCanContinue()));
}

// A recording that is copied piece by piece while it goes on. What pieces make up, the stories compare.
class RecordingCopyTest : public RecordingTest {
protected:
    void record(int count) {
        for (; count != 0; --count)
            recording.handleInputReport(static_cast<std::uint64_t>(recording.frames().size()), nullptr, 0);
    }
    RecordingCopy copy{20};
};

TEST_F(RecordingCopyTest, BeginsAgainWhenWhatItCopiedIsTakenOut) {
    recording.setMaxFrameCount(5);
    record(9);
    EXPECT_FALSE(copy.copySome(recording, 4));
    recording.trimFrames(2); // the frames that were copied are gone
    EXPECT_FALSE(copy.copySome(recording, 1));
    EXPECT_TRUE(copy.copySome(recording, 1)) << "a piece that ends with the last frame is the last";
    EXPECT_EQ(textsOf(copy.recording().frames()), textsOf(recording.frames()));
    EXPECT_EQ(copy.recording().pipeline, log);
    for (int i = 0; i < 20; ++i)
        copy.recording().handleInputReport(100, nullptr, 0);
    EXPECT_LT(copy.recording().frames().size(), 10U) << "bounded like the recording";
}

TEST_F(RecordingCopyTest, ComesToAnEndThoughFramesAreAlwaysTakenOut) {
    recording.setMaxFrameCount(5);
    int pieces = 1;
    for (record(9); !copy.copySome(recording, 1); ++pieces)
        record(10); // trimmed at least once
    EXPECT_EQ(pieces, 3);
    EXPECT_EQ(textsOf(copy.recording().frames()), textsOf(recording.frames()));
}

} // namespace
} // namespace VeltoTouch::Tests
