#include "Recording/PipelineRecording.h"

#include "Tests/Support/Frames.h"

#include <limits>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;

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

TEST(ContainerWriterTest, WritesCompactTextOfTheCurrentVersion) {
    EXPECT_EQ(written(PipelineRecording()), R"({"Frames":[],"Version":2})");
    EXPECT_EQ(written(recordingOf({reportFrame({0x01, 0xFF}, 5), setting("k", json(R"({"b":1.0,"a":[true]})"), 6),
                                   setting("k", nullptr, 7), metadata("m", json("null"), 8), reportFrame({}, 9)})),
              R"({"Frames":[{"Data":"01 ff ","Timestamp":5,"Type":"InputReport"},)"
              R"({"Key":"k","Timestamp":6,"Type":"State","Value":{"a":[true],"b":1.0}},)"
              R"({"Key":"k","Timestamp":7,"Type":"State"},)"
              R"({"Key":"m","Timestamp":8,"Type":"Metadata","Value":null},)"
              R"({"Data":"","Timestamp":9,"Type":"InputReport"}],"Version":2})");
}

TEST(ContainerWriterTest, LeavesOutFramesOfNoKnownType) {
    Frame unknown = setting("k", nullptr);
    unknown.type = static_cast<Frame::Type>(3);
    EXPECT_EQ(written(recordingOf({unknown})), R"({"Frames":[],"Version":2})");
    EXPECT_EQ(written(recordingOf({reportFrame({1}), unknown})),
              R"({"Frames":[{"Data":"01 ","Timestamp":0,"Type":"InputReport"}],"Version":2})");
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
    EXPECT_THAT(read, ElementsAreArray(textsOf(recording.frames())));
}

TEST(ContainerWriterTest, TrimsToTheBoundAndSortsTheRecordingItself) {
    PipelineRecording recording;
    recording.setMaxFrameCount(2);
    for (const Frame& frame : {reportFrame({1}, 9), setting("k", nullptr, 8), reportFrame({2}, 7)})
        recording.appendFrame(frame);
    recording.appendFrame(reportFrame({3}, 3)); // the fourth: trimmed to k, 2, 3
    recording.appendFrame(reportFrame({4}, 5)); // and again
    EXPECT_THAT(textsOf(recording.frames()), ElementsAre("k=@8", "[03]@3", "[04]@5"));
    recording.setMaxFrameCount(0);
    recording.appendFrame(reportFrame({5}, 1));
    EXPECT_THAT(writtenAndRead(recording), ElementsAre("[05]@1", "[03]@3", "[04]@5", "k=@8")) << "no bound, no trim";

    PipelineRecording bounded;
    bounded.setMaxFrameCount(2);
    for (std::uint8_t i = 1; i <= 3; ++i)
        bounded.appendFrame(reportFrame({i}, 10U - i));
    EXPECT_TRUE(bounded.json());
    EXPECT_THAT(textsOf(bounded.frames()), ElementsAre("[03]@7", "[02]@8"));
}

TEST(ContainerWriterTest, AValueWithoutAJSONFormBecomesAWordForIt) {
    const auto valueOf = [](Ref<Value> value) {
        return writtenAndRead(recordingOf({setting("k", std::move(value))})).at(0);
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(valueOf(makeRef<Data>("\x01\xFF")), R"(k={"Unrepresentable":"data"}@0)");
    EXPECT_EQ(valueOf(Number::withDouble(kInfinity)), R"(k={"Unrepresentable":"infinity"}@0)");
    EXPECT_EQ(valueOf(Number::withFloat(-std::numeric_limits<float>::infinity())),
              R"(k={"Unrepresentable":"-infinity"}@0)");
    EXPECT_EQ(valueOf(Number::withDouble(std::numeric_limits<double>::quiet_NaN())),
              R"(k={"Unrepresentable":"nan"}@0)");
    EXPECT_EQ(valueOf(makeRef<Array>(std::vector<Ref<Value>>{json("1"), makeRef<Data>("x"), json("2")})),
              R"(k=[1,{"Unrepresentable":"data"},2]@0)");
}

TEST(ContainerWriterTest, AValueTooDeepForTheReaderCostsOnlyItself) {
    const auto nested = [](std::size_t depth) { return json(std::string(depth, '[') + std::string(depth, ']')); };
    const auto frames =
        writtenAndRead(recordingOf({setting("deep", nested(1020), 1), setting("deeper", nested(1021), 2),
                                    metadata("deepest", nested(1024), 3), reportFrame({1}, 4)}));
    ASSERT_EQ(frames.size(), 4U);
    EXPECT_EQ(frames[0].size(), std::string("deep=@1").size() + std::size_t{2} * 1020);
    EXPECT_EQ(frames[1], R"(deeper={"Unrepresentable":"depth"}@2)");
    EXPECT_EQ(frames[2], R"(deepest:{"Unrepresentable":"depth"}@3)");
    EXPECT_EQ(frames[3], "[01]@4");
}

TEST(ContainerWriterTest, AnyKeyGivesAContainerThatCanBeRead) {
    const auto keyOf = [](std::string key) {
        return PipelineRecording(recordingOf({setting(std::move(key), nullptr)}).json().get()).frames().front().key;
    };
    const std::string kOdd = "\" \\ / \b\f\n\r\t \x01\x7F \0 \u00e9 \u20ac \U0001F600"s;
    EXPECT_EQ(keyOf(kOdd), kOdd);
    EXPECT_EQ(keyOf(""), "");
    EXPECT_EQ(keyOf("a\xFF"
                    "b"),
              "a\uFFFDb")
        << "a byte that is in no sequence";
    EXPECT_EQ(keyOf("\xC0\x80"), "\uFFFD\uFFFD") << "overlong";
    EXPECT_EQ(keyOf("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD") << "half of a surrogate pair";
    EXPECT_EQ(keyOf("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD") << "beyond Unicode";
    EXPECT_EQ(keyOf("\xE2\x82"), "\uFFFD\uFFFD") << "cut off";
}

} // namespace
} // namespace VeltoTouch::Tests
