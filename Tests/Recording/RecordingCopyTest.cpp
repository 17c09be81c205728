#include "Recording/RecordingCopy.h"
#include "Tests/Support/Frames.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// A recording that the tests add reports to; every third frame is a setting.
class RecordingCopyTest : public testing::Test {
protected:
    void record(int count) {
        for (; count != 0; --count) {
            const auto time = ++_time;
            const auto number = static_cast<std::uint8_t>(time);
            if (time % 3 == 0)
                recording.setState(time, "key", Number::withUnsignedLong(time));
            else
                recording.handleInputReport(time, &number, 1);
        }
    }
    // The copy's frames; the recording's are compared as they are now.
    void expectEqual() { EXPECT_EQ(textsOf(copy.recording().frames()), textsOf(recording.frames())); }

    PipelineRecording recording;
    RecordingCopy copy{20};

private:
    std::uint64_t _time = 0;
};

TEST_F(RecordingCopyTest, PiecesMakeUpWhatTheRecordingIsAtTheLastOne) {
    record(10);
    EXPECT_FALSE(copy.copySome(recording, 4));
    EXPECT_FALSE(copy.copySome(recording, 4));
    record(3);
    EXPECT_FALSE(copy.copySome(recording, 4));
    EXPECT_TRUE(copy.copySome(recording, 4));
    expectEqual();
    EXPECT_EQ(copy.recording().frames().size(), 13U);
}

TEST_F(RecordingCopyTest, APieceThatEndsWithTheLastFrameIsTheLast) {
    record(8);
    EXPECT_FALSE(copy.copySome(recording, 4));
    EXPECT_TRUE(copy.copySome(recording, 4));
    RecordingCopy ofNothing(0);
    EXPECT_TRUE(ofNothing.copySome(PipelineRecording(), 4));
}

TEST_F(RecordingCopyTest, WhatIsTakenOutMeanwhileIsNotInTheCopy) {
    record(10);
    EXPECT_FALSE(copy.copySome(recording, 4));
    recording.trimFrames(2); // the frames that were copied are gone
    EXPECT_FALSE(copy.copySome(recording, 2));
    while (!copy.copySome(recording, 2)) {
    }
    expectEqual();
}

TEST_F(RecordingCopyTest, ComesToAnEndThoughFramesAreTakenOutAllTheTime) {
    recording.setMaxFrameCount(5);
    int pieces = 1;
    for (record(9); !copy.copySome(recording, 1); ++pieces)
        record(10); // trimmed at least once
    EXPECT_EQ(pieces, 3);
    expectEqual();
}

TEST_F(RecordingCopyTest, TheCopyHasTargetAndBoundAndCanBeRecordedInto) {
    const auto log = std::make_shared<CallLog>();
    recording.pipeline = log;
    recording.setMaxFrameCount(5);
    record(9);
    while (!copy.copySome(recording, 4)) {
    }
    PipelineRecording& copied = copy.recording();
    EXPECT_EQ(copied.pipeline, log);
    EXPECT_FALSE(copied.playCanContinue());
    for (int i = 0; i < 20; ++i)
        copied.handleInputReport(100, nullptr, 0);
    EXPECT_LT(copied.frames().size(), 11U);
    EXPECT_EQ(recording.frames().size(), 9U);
}

} // namespace
} // namespace VeltoTouch::Tests
