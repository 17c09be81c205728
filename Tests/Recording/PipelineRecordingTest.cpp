#include "Plugin/Recording/RecordingCopy.h"
#include "Tests/Support/Frames.h"

#include <array>
#include <type_traits>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class RecordingTest : public testing::Test {
protected:
    RecordingTest() { recording.pipeline = log; }

    const std::shared_ptr<CallLog> log = std::make_shared<CallLog>();
    PipelineRecording recording;
};

TEST_F(RecordingTest, CallsAreKeptAsFramesAndForwardedUnchangedWhereThereIsATarget) {
    const std::array<std::uint8_t, 3> report{0x01, 0x00, 0xFF};
    const Ref<Value> value = json(R"({"X":0.5})");
    std::vector<std::string> newest;
    log->whenCalled = [&] { newest.push_back(textOf(recording.frames().back())); };
    const auto makeCalls = [&] {
        recording.setState(~std::uint64_t{0}, "", nullptr);
        recording.handleInputReport(5, nullptr, 0);
        recording.handleInputReport(9, report.data(), report.size());
        recording.handleMetadata(8, "Accel", value);
    };
    makeCalls();

    const std::array calls{"=@18446744073709551615", "[]@5", "[01 00 ff]@9", "Accel:{\"X\":0.5}@8"};
    EXPECT_THAT(textsOf(recording.frames()), ElementsAreArray(calls));
    EXPECT_THAT(textsOf(log->calls), ElementsAreArray(calls));
    EXPECT_THAT(newest, ElementsAreArray(calls)) << "in the list before the pipeline sees the call";
    EXPECT_EQ(log->lastReport, report.data());
    EXPECT_EQ(log->calls.back().value, value) << "the object itself, no copy of it";
    EXPECT_EQ(recording.frames().back().value, value);

    recording = PipelineRecording();
    makeCalls();
    EXPECT_THAT(textsOf(recording.frames()), ElementsAreArray(calls));
}

TEST_F(RecordingTest, ACopyHasItsOwnListTheSameTargetAndBoundAndNoPlayback) {
    recording.setMaxFrameCount(2);
    recording.appendFrame(reportFrame({1}));
    recording.appendFrame(metadata("m", json("[1,2]")));
    recording.playReset();

    PipelineRecording constructed(recording);
    PipelineRecording assigned;
    assigned.appendFrame(setting("old", json("1")));
    assigned.playReset();
    assigned = recording;
    for (PipelineRecording* copy : {&constructed, &assigned}) {
        EXPECT_FALSE(copy->playCanContinue());
        EXPECT_EQ(copy->pipeline, log);
        EXPECT_THAT(textsOf(copy->frames()), ElementsAre("[01]@0", "m:[1,2]@0"));
        EXPECT_EQ(copy->frames().back().value, recording.frames().back().value) << "values are shared";
        copy->appendFrame(reportFrame({3}));
        copy->appendFrame(reportFrame({4}));
        EXPECT_THAT(textsOf(copy->frames()), ElementsAre("[03]@0", "[04]@0")) << "bounded like the original";
    }
    ASSERT_TRUE(recording.playCanContinue()) << "the original is not touched";
    recording.playNextFrame(1);
    EXPECT_THAT(textsOf(log->calls), ElementsAre("[01]@" + std::to_string(recording.playStartTime())));
}

TEST_F(RecordingTest, AMoveTakesTheFramesAndLeavesASafeRecording) {
    recording.setMaxFrameCount(1);
    recording.appendFrame(reportFrame({1}));
    recording.playReset();
    PipelineRecording constructed(std::move(recording));
    EXPECT_FALSE(constructed.playCanContinue());
    constructed.playReset();
    PipelineRecording assigned;
    assigned = std::move(constructed);
    EXPECT_FALSE(assigned.playCanContinue());
    EXPECT_EQ(assigned.pipeline, log);
    EXPECT_THAT(textsOf(assigned.frames()), ElementsAre("[01]@0"));
    assigned.appendFrame(reportFrame({2}));
    EXPECT_THAT(textsOf(assigned.frames()), ElementsAre("[02]@0")) << "the bound moves too";

    // NOLINTBEGIN(bugprone-use-after-move): that a moved-from recording can be used is what is tested
    for (PipelineRecording* movedFrom : {&recording, &constructed}) {
        EXPECT_FALSE(movedFrom->playCanContinue());
        movedFrom->appendFrame(reportFrame({3}));
        EXPECT_THAT(textsOf(movedFrom->frames()), ElementsAre("[03]@0"));
    }
    // NOLINTEND(bugprone-use-after-move)
}

// An exception in them, which can only be one of memory, ends the process.
TEST_F(RecordingTest, NothingThrowsButPlayingAndReading) {
    std::list<Frame> frames;
    Frame frame;
    const std::string key;
    const Ref<Value> value;
    const std::pair<const char*, bool> rows[]{
        {"setState", noexcept(recording.setState(0, key, value))},
        {"handleInputReport", noexcept(recording.handleInputReport(0, nullptr, 0))},
        {"handleMetadata", noexcept(recording.handleMetadata(0, key, value))},
        {"appendFrame", noexcept(recording.appendFrame(std::move(frame)))},
        {"trimFrames of a list", noexcept(PipelineRecording::trimFrames(frames, 0))},
        {"sortFrames of a list", noexcept(PipelineRecording::sortFrames(frames))},
        {"trimFrames", noexcept(recording.trimFrames(0))},
        {"sortFrames", noexcept(recording.sortFrames())},
        {"setMaxFrameCount", noexcept(recording.setMaxFrameCount(0))},
        {"playReset", noexcept(recording.playReset())},
        {"playCanContinue", noexcept(recording.playCanContinue())},
        {"json", noexcept(recording.json())},
    };
    for (const auto& [name, isNoexcept] : rows)
        EXPECT_TRUE(isNoexcept) << name;
    static_assert(std::is_void_v<decltype(PipelineRecording::trimFrames(frames, 0))>);
}

// A recording that is copied piece by piece while the tests add to it; every third frame is a setting.
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
    // Copies the rest; the copy is what the recording is now.
    void copyRest(std::size_t piece) {
        while (!copy.copySome(recording, piece)) {
        }
        EXPECT_EQ(textsOf(copy.recording().frames()), textsOf(recording.frames()));
    }

    PipelineRecording recording;
    RecordingCopy copy{20};

private:
    std::uint64_t _time = 0;
};

TEST_F(RecordingCopyTest, PiecesMakeUpWhatTheRecordingIsAtTheLastOne) {
    record(10);
    EXPECT_FALSE(copy.copySome(recording, 4));
    EXPECT_FALSE(copy.copySome(recording, 4));
    record(2);
    EXPECT_TRUE(copy.copySome(recording, 4)) << "a piece that ends with the last frame is the last";
    EXPECT_EQ(textsOf(copy.recording().frames()), textsOf(recording.frames()));
    EXPECT_TRUE(RecordingCopy(0).copySome(PipelineRecording(), 4));
}

TEST_F(RecordingCopyTest, WhatIsTakenOutMeanwhileIsNotInTheCopy) {
    record(10);
    EXPECT_FALSE(copy.copySome(recording, 4));
    recording.trimFrames(2); // the frames that were copied are gone
    EXPECT_FALSE(copy.copySome(recording, 2));
    copyRest(2);
}

TEST_F(RecordingCopyTest, ComesToAnEndThoughFramesAreTakenOutAllTheTime) {
    recording.setMaxFrameCount(5);
    int pieces = 1;
    for (record(9); !copy.copySome(recording, 1); ++pieces)
        record(10); // trimmed at least once
    EXPECT_EQ(pieces, 3);
    EXPECT_EQ(textsOf(copy.recording().frames()), textsOf(recording.frames()));
}

TEST_F(RecordingCopyTest, TheCopyHasTargetAndBoundOfTheLastPieceAndCanBeRecordedInto) {
    recording.setMaxFrameCount(5);
    record(9);
    const auto sizeAfterReports = [&](RecordingCopy& from) {
        PipelineRecording& copied = from.recording();
        EXPECT_EQ(copied.pipeline, recording.pipeline);
        EXPECT_FALSE(copied.playCanContinue());
        for (int i = 0; i < 20; ++i)
            copied.handleInputReport(100, nullptr, 0);
        return copied.frames().size();
    };
    RecordingCopy bounded(0);
    EXPECT_TRUE(bounded.copySome(recording, 9));
    EXPECT_LT(sizeAfterReports(bounded), 11U);

    EXPECT_FALSE(copy.copySome(recording, 4));
    recording.pipeline = std::make_shared<CallLog>();
    recording.setMaxFrameCount(0); // takes no frame out
    copyRest(4);
    EXPECT_EQ(sizeAfterReports(copy), 29U);
    EXPECT_EQ(recording.frames().size(), 9U);
}

} // namespace
} // namespace VeltoTouch::Tests
