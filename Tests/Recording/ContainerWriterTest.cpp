#include "Recording/PipelineRecording.h"

#include "Tests/Support/Frames.h"

#include <limits>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

PipelineRecording recordingOf(std::initializer_list<Frame> frames) {
    PipelineRecording recording;
    for (const Frame& frame : frames)
        recording.appendFrame(frame);
    return recording;
}

std::string written(PipelineRecording recording) { return std::string(recording.json()->bytes()); }

std::vector<std::string> writtenAndRead(PipelineRecording recording) {
    return textsOf(PipelineRecording(recording.json().get()).frames());
}

TEST(ContainerWriterTest, WritesCompactTextOfTheCurrentVersionWithoutFramesOfNoKnownType) {
    Frame unknown = setting("k", nullptr);
    unknown.type = static_cast<Frame::Type>(3);
    EXPECT_EQ(written(recordingOf({unknown})), R"({"Frames":[],"Version":2})");
    EXPECT_EQ(written(recordingOf({unknown, reportFrame({0x01, 0xFF}, 5), setting("k", json(R"({"b":1.0,"a":[1]})"), 6),
                                   setting("k", nullptr, 7), metadata("m", json("null"), 8),
                                   metadata("m", makeRef<Data>("x"), 9), reportFrame({}, 10)})),
              R"({"Frames":[{"Data":"01 ff ","Timestamp":5,"Type":"InputReport"},)"
              R"({"Key":"k","Timestamp":6,"Type":"State","Value":{"a":[1],"b":1.0}},)"
              R"({"Key":"k","Timestamp":7,"Type":"State"},)"
              R"({"Key":"m","Timestamp":8,"Type":"Metadata","Value":null},)"
              R"({"Key":"m","Timestamp":9,"Type":"Metadata","Value":{"Unrepresentable":"data"}},)"
              R"({"Data":"","Timestamp":10,"Type":"InputReport"}],"Version":2})");
}

TEST(ContainerWriterTest, WhatIsReadBackIsWhatWasWrittenInTheOrderOfTime) {
    std::vector<std::uint8_t> everyByte(256);
    for (std::size_t i = 0; i < everyByte.size(); ++i)
        everyByte[i] = static_cast<std::uint8_t>(i);
    PipelineRecording recording =
        recordingOf({setting("Algs.ActivationThreshold", Number::withFloat(0.1F), 30),
                     reportFrame(everyByte, 9007199254740993), metadata("Accel", json(R"({"X":-1,"Y":1e300})"), 30),
                     setting("k", Number::withUnsignedLong(std::numeric_limits<std::uint64_t>::max()), 20),
                     setting("k", Number::withLongLong(std::numeric_limits<std::int64_t>::min()), 40),
                     setting("k", nullptr, 10), metadata("m", makeRef<Null>(), ~std::uint64_t{0})});
    const auto read = writtenAndRead(recording);
    recording.sortFrames();
    EXPECT_EQ(read, textsOf(recording.frames()));
}

TEST(ContainerWriterTest, TrimsToTheBoundAndSortsTheRecordingItself) {
    PipelineRecording recording;
    recording.setMaxFrameCount(2);
    for (const Frame& frame : {reportFrame({1}, 9), reportFrame({2}, 8), reportFrame({3}, 7)})
        recording.appendFrame(frame);
    EXPECT_TRUE(recording.json());
    EXPECT_THAT(textsOf(recording.frames()), ElementsAre("[03]@7", "[02]@8"));

    recording.setMaxFrameCount(0);
    recording.appendFrame(reportFrame({4}, 1));
    EXPECT_THAT(writtenAndRead(recording), ElementsAre("[04]@1", "[03]@7", "[02]@8")) << "no bound, no trim";
}

TEST(ContainerWriterTest, AValueTooDeepForTheReaderCostsOnlyItself) {
    const auto nested = [](std::size_t depth, const char* inner) {
        return std::string(depth, '[') + inner + std::string(depth, ']');
    };
    const std::string deepest = nested(1020, "1");
    const std::string deepestEmpty = nested(1021, "");
    EXPECT_THAT(writtenAndRead(recordingOf({setting("k", json(deepest)), setting("k", json(deepestEmpty)),
                                            metadata("m", json(nested(1021, "1"))),
                                            metadata("m", json(nested(1022, ""))), reportFrame({1})})),
                ElementsAre("k=" + deepest + "@0", "k=" + deepestEmpty + "@0", R"(m:{"Unrepresentable":"depth"}@0)",
                            R"(m:{"Unrepresentable":"depth"}@0)", "[01]@0"));
}

TEST(ContainerWriterTest, AnyKeyGivesAContainerThatCanBeRead) {
    const std::string odd = "\" \\ / \b\f\n\r\t \x01\x7F \0 \u00e9 \u20ac \U0001F600"s;
    EXPECT_THAT(writtenAndRead(recordingOf({setting(odd, nullptr), setting("", nullptr), setting("a\xFF-", nullptr)})),
                ElementsAre(odd + "=@0", "=@0", "a\uFFFD-=@0"));
}

} // namespace
} // namespace VeltoTouch::Tests
