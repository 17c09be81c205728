#include "Recording/PipelineRecording.h"

#include "Tests/Support/Frames.h"

#include <limits>
#include <sstream>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

// Frames by name: a=1 is a setting, M1 metadata, any other word a report.
std::list<Frame> framesNamed(const std::string& names) {
    std::list<Frame> frames;
    std::istringstream stream(names);
    for (std::string name; stream >> name;) {
        if (const auto equals = name.find('='); equals != std::string::npos)
            frames.push_back(setting(name.substr(0, equals), makeRef<String>(name.substr(equals + 1))));
        else if (name.starts_with("M"))
            frames.push_back(metadata(name, nullptr));
        else
            frames.push_back(reportFrame({name.begin(), name.end()}));
    }
    return frames;
}

std::string namesOf(const std::list<Frame>& frames) {
    std::string names;
    for (const Frame& frame : frames) {
        names.append(names.empty() ? "" : " ").append(frame.key);
        if (frame.type == Frame::Type::State)
            names.append("=").append(as<String>(frame.value)->text());
        else
            names.append(frame.report.begin(), frame.report.end());
    }
    return names;
}

struct Trimming {
    const char* name;
    std::uint64_t maxFrameCount;
    const char* frames;
    const char* kept;
};
void PrintTo(const Trimming& row, std::ostream* out) { *out << row.name; }

class TrimmingTest : public testing::TestWithParam<Trimming> {};

TEST_P(TrimmingTest, KeepsTheNewestReportsAndTheSettingsInForceBeforeThem) {
    std::list<Frame> frames = framesNamed(GetParam().frames);
    const std::size_t count = frames.size();
    const std::list<Frame> removed = PipelineRecording::trimFrames(frames, GetParam().maxFrameCount);
    EXPECT_EQ(namesOf(frames), GetParam().kept);
    EXPECT_THAT(removed, SizeIs(count - frames.size()));
}

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();

INSTANTIATE_TEST_SUITE_P(
    Lists, TrimmingTest,
    testing::Values(Trimming{"WorkedExample", 2, "k1=1 R1 k1=2 k2=7 R2 k1=3 k1=4 R3", "k1=2 k2=7 R2 k1=4 R3"},
                    Trimming{"Nothing", 1, "", ""}, //
                    Trimming{"SettingsAlone", 3, "a=1 b=1 a=2 a=3 b=2", "a=3 b=2"},
                    Trimming{"NoReportsWanted", 0, "a=1 R1 b=1 M1 a=2 R2", "b=1 a=2"},
                    Trimming{"MetadataCountsLikeReports", 2, "R1 M1 R2 a=1", "M1 R2 a=1"},
                    Trimming{"OneSettingPerKeyAndStretch", kLargest, "a=1 a=2 R1 a=3 b=1 a=4 R2 a=5 a=6",
                             "a=2 R1 b=1 a=4 R2 a=6"},
                    Trimming{"RemovedReportsDoNotPartTheOlderSettings", 1, "a=1 R1 a=2 b=1 R2 a=3 R3", "b=1 a=3 R3"},
                    Trimming{"SettingsAfterTheNewestReport", 1, "a=1 R1 a=2 R2 a=3", "a=2 R2 a=3"},
                    Trimming{"KeysDifferByEachByte", 1, "a=1 A=2 a.=3 a=4 R1", "A=2 a.=3 a=4 R1"}),
    [](const auto& row) { return row.param.name; });

TEST(RecordingBoundTest, TrimsAtTwiceTheBoundAndNotBefore) {
    PipelineRecording recording;
    recording.setMaxFrameCount(3);
    for (const Frame& frame : framesNamed("R1 R2 R3 M4 R5"))
        recording.appendFrame(frame);
    EXPECT_THAT(recording.frames(), SizeIs(5));
    recording.appendFrame(reportFrame({'R', '6'}));
    EXPECT_EQ(namesOf(recording.frames()), "M4 R5 R6");
}

TEST(RecordingBoundTest, SettingsCountTowardTwiceTheBound) {
    PipelineRecording recording;
    recording.setMaxFrameCount(2);
    for (const Frame& frame : framesNamed("a=1 R1 a=2"))
        recording.appendFrame(frame);
    EXPECT_EQ(namesOf(recording.frames()), "a=1 R1 a=2");
    recording.appendFrame(framesNamed("a=3").front());
    EXPECT_EQ(namesOf(recording.frames()), "a=1 R1 a=3");
}

TEST(RecordingBoundTest, ANewBoundTrimsAtOnceAndNoneIsNoBound) {
    PipelineRecording recording;
    for (const Frame& frame : framesNamed("R1 R2 R3 R4 R5"))
        recording.appendFrame(frame);
    recording.setMaxFrameCount(4);
    EXPECT_EQ(namesOf(recording.frames()), "R2 R3 R4 R5");
    recording.setMaxFrameCount(0);
    for (const Frame& frame : framesNamed("R6 a=1 a=2 R7 R8 R9"))
        recording.appendFrame(frame);
    EXPECT_EQ(namesOf(recording.frames()), "R2 R3 R4 R5 R6 a=1 a=2 R7 R8 R9");
}

TEST(RecordingBoundTest, ABoundWhoseDoubleIsBeyond64BitsTrimsNothing) {
    PipelineRecording recording;
    recording.setMaxFrameCount(std::uint64_t{1} << 63U);
    recording.appendFrame(framesNamed("a=1").front());
    recording.appendFrame(framesNamed("a=2").front());
    EXPECT_EQ(namesOf(recording.frames()), "a=1 a=2");
}

// The memory of trimmed frames is used again for reports; nothing of what it held may shine through.
TEST(RecordingBoundTest, FramesStayRightWhenTrimmedOnesAreUsedAgain) {
    constexpr std::uint64_t kBound = 4;
    PipelineRecording recording;
    recording.setMaxFrameCount(kBound);
    std::list<Frame> expected;
    for (std::uint8_t i = 0; i < 60; ++i) {
        const std::size_t length = i % 3 == 0 ? 200 : i % 5;
        const Frame frame = i % 7 == 3   ? metadata("Accel", Number::withUnsignedLong(i), i)
                            : i % 7 == 5 ? setting(i % 2 == 0 ? "a" : "b", Number::withUnsignedLong(i), i)
                                         : reportFrame(std::vector<std::uint8_t>(length, i), i);
        if (frame.type == Frame::Type::InputReport)
            recording.handleInputReport(i, frame.report.data(), frame.report.size());
        else if (frame.type == Frame::Type::Metadata)
            recording.handleMetadata(i, frame.key, frame.value);
        else
            recording.setState(i, frame.key, frame.value);

        expected.push_back(frame);
        if (expected.size() >= 2 * kBound)
            PipelineRecording::trimFrames(expected, kBound);
        ASSERT_EQ(textsOf(recording.frames()), textsOf(expected)) << "after call " << int{i};
    }
}

TEST(RecordingSortTest, SortsByTimeAndKeepsTheOrderOfEqualTimes) {
    constexpr std::uint64_t kLate = ~std::uint64_t{0};
    std::list<Frame> frames{reportFrame({1}, 5),      reportFrame({2}, 3), reportFrame({3}, kLate),
                            setting("k", nullptr, 5), reportFrame({4}, 1), reportFrame({5}, 5)};
    PipelineRecording::sortFrames(frames);
    EXPECT_THAT(textsOf(frames),
                ElementsAre("[04]@1", "[02]@3", "[01]@5", "k=@5", "[05]@5", "[03]@18446744073709551615"));
}

} // namespace
} // namespace VeltoTouch::Tests
