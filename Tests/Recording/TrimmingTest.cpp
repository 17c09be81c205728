#include "Tests/Support/Frames.h"

#include <sstream>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

// Frames by name: a=1 is a setting, M1 metadata, any other word a report.
std::list<Frame> framesNamed(const std::string& names) {
    std::list<Frame> frames;
    std::istringstream stream(names);
    for (std::string name; stream >> name;) {
        if (const auto equals = name.find('='); equals != std::string::npos)
            frames.push_back(setting(name.substr(0, equals), json(name.substr(equals + 1))));
        else
            frames.push_back(name.starts_with("M") ? metadata(name, nullptr) : reportFrame({name.begin(), name.end()}));
    }
    return frames;
}

void expectFrames(const std::list<Frame>& frames, const char* names) {
    EXPECT_EQ(textsOf(frames), textsOf(framesNamed(names)));
}

TEST(TrimmingTest, KeepsTheNewestReportsAndTheSettingsInForceBeforeThem) {
    struct Row {
        const char* name;
        std::uint64_t maxFrameCount;
        const char* frames;
        const char* kept;
    };
    for (const auto& [name, maxFrameCount, names, kept] : {
             Row{"worked example", 2, "k1=1 R1 k1=2 k2=7 R2 k1=3 k1=4 R3", "k1=2 k2=7 R2 k1=4 R3"},
             Row{"settings alone", 3, "a=1 b=1 a=2 a=3 b=2", "a=3 b=2"},
             Row{"no reports wanted", 0, "a=1 R1 b=1 M1 a=2 R2", "b=1 a=2"},
             Row{"metadata count like reports", 2, "R1 M1 R2 a=1", "M1 R2 a=1"},
             Row{"one setting per key and stretch", ~std::uint64_t{0}, "a=1 a=2 R1 a=3 b=1 a=4 R2 a=5 a=6",
                 "a=2 R1 b=1 a=4 R2 a=6"},
             Row{"removed reports do not part the older settings", 1, "a=1 R1 a=2 b=1 R2 a=3 R3", "b=1 a=3 R3"},
             Row{"settings after the newest report", 1, "a=1 R1 a=2 R2 a=3", "a=2 R2 a=3"},
             Row{"keys differ by each byte", 1, "a=1 A=2 a.=3 a=4 R1", "A=2 a.=3 a=4 R1"},
         }) {
        SCOPED_TRACE(name);
        std::list<Frame> frames = framesNamed(names);
        PipelineRecording::trimFrames(frames, maxFrameCount);
        expectFrames(frames, kept);
    }
}

TEST(RecordingBoundTest, TrimsAtTwiceTheBoundSettingsIncludedAndNotBeforeButAtOnceWhenItIsNew) {
    struct Row {
        std::uint64_t bound;
        const char* frames;
        const char* kept;
        const char* keptBySetting; // the bound when all are there
    };
    for (const auto& [bound, names, kept, keptBySetting] : {
             Row{3, "R1 R2 R3 M4 R5", "R1 R2 R3 M4 R5", "R3 M4 R5"},
             Row{3, "R1 R2 R3 M4 R5 R6", "M4 R5 R6", "M4 R5 R6"},
             Row{2, "a=1 R1 a=2", "a=1 R1 a=2", "a=1 R1 a=2"},
             Row{2, "a=1 R1 a=2 a=3", "a=1 R1 a=3", "a=1 R1 a=3"},
             Row{std::uint64_t{1} << 63U, "a=1 a=2", "a=1 a=2", "a=2"}, // twice that is beyond 64 bits
             Row{0, "R1 R2 a=1 a=2", "R1 R2 a=1 a=2", "R1 R2 a=1 a=2"},
         }) {
        SCOPED_TRACE(names);
        for (const bool isNew : {false, true}) {
            PipelineRecording recording;
            recording.setMaxFrameCount(isNew ? 0 : bound);
            for (const Frame& frame : framesNamed(names))
                recording.appendFrame(frame);
            recording.setMaxFrameCount(isNew ? bound : 0);
            expectFrames(recording.frames(), isNew ? keptBySetting : kept);
        }
    }
}

// The memory of trimmed frames is used again for reports; nothing of what it held may shine through.
TEST(RecordingBoundTest, FramesStayRightWhenTrimmedOnesAreUsedAgain) {
    constexpr std::uint64_t kBound = 4;
    PipelineRecording recording;
    recording.setMaxFrameCount(kBound);
    std::list<Frame> expected;
    for (std::uint8_t i = 0; i < 60; ++i) {
        const Ref<Value> value = Number::withUnsignedLong(i);
        if (i % 7 == 3) {
            recording.handleMetadata(i, "Accel", value);
            expected.push_back(metadata("Accel", value, i));
        } else if (i % 7 == 5) {
            recording.setState(i, i % 2 == 0 ? "a" : "b", value);
            expected.push_back(setting(i % 2 == 0 ? "a" : "b", value, i));
        } else if (i % 7 == 1) {
            Frame odd = reportFrame({i}, i);
            odd.key = "of no report";
            odd.value = value;
            recording.appendFrame(odd);
            expected.push_back(odd);
        } else {
            const std::vector<std::uint8_t> report(i % 3 == 0 ? 200 : i % 5, i);
            recording.handleInputReport(i, report.data(), report.size());
            expected.push_back(reportFrame(report, i));
        }
        if (expected.size() >= 2 * kBound)
            PipelineRecording::trimFrames(expected, kBound);
        ASSERT_EQ(textsOf(recording.frames()), textsOf(expected)) << "after call " << int{i};
    }
}

TEST(RecordingSortTest, SortsByTimeAndKeepsTheOrderOfEqualTimes) {
    std::list<Frame> frames{reportFrame({1}, 5),      reportFrame({2}, 3), reportFrame({3}, ~std::uint64_t{0}),
                            setting("k", nullptr, 5), reportFrame({4}, 1), reportFrame({5}, 5)};
    PipelineRecording::sortFrames(frames);
    EXPECT_THAT(textsOf(frames),
                ElementsAre("[04]@1", "[02]@3", "[01]@5", "k=@5", "[05]@5", "[03]@18446744073709551615"));
}

} // namespace
} // namespace VeltoTouch::Tests
