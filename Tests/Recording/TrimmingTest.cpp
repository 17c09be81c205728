#include "Tests/Support/Frames.h"

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
            frames.push_back(setting(name.substr(0, equals), json(name.substr(equals + 1))));
        else
            frames.push_back(name.starts_with("M") ? metadata(name, nullptr) : reportFrame({name.begin(), name.end()}));
    }
    return frames;
}

TEST(TrimmingTest, KeepsNewestReportsAndSettingsInForceBeforeThem) {
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
             Row{"removed reports do not part the older settings", 1, "a=1 R1 a=2 b=1 R2 a=3 R3", "b=1 a=3 R3"},
             Row{"keys differ by each byte", 1, "a=1 A=2 a.=3 a=4 R1", "A=2 a.=3 a=4 R1"},
         }) {
        std::list<Frame> frames = framesNamed(names);
        PipelineRecording::trimFrames(frames, maxFrameCount);
        EXPECT_EQ(textsOf(frames), textsOf(framesNamed(kept))) << name;
    }
}

// Memory of trimmed frames is used again for reports; nothing of what it held may shine through.
TEST(RecordingBoundTest, TrimsAtTwiceTheBoundAndUsesFramesAgain) {
    PipelineRecording recording;
    recording.setMaxFrameCount(2);
    Frame odd = reportFrame({1, 2, 3});
    odd.key = "of no report";
    odd.value = json("1");
    recording.appendFrame(odd);
    for (std::uint8_t i = 2; i <= 3; ++i)
        recording.handleInputReport(i, &i, 1);
    EXPECT_THAT(recording.frames(), SizeIs(3));
    for (std::uint8_t i = 4; i <= 5; ++i)
        recording.handleInputReport(i, &i, 1);
    EXPECT_THAT(textsOf(recording.frames()), ElementsAre("[03]@3", "[04]@4", "[05]@5"));

    recording.setMaxFrameCount(std::uint64_t{1} << 63U); // twice that is beyond 64 bits
    recording.handleInputReport(6, nullptr, 0);
    recording.setState(7, "a", nullptr);
    recording.setState(8, "a", nullptr);
    EXPECT_THAT(recording.frames(), SizeIs(6));
}

} // namespace
} // namespace VeltoTouch::Tests
