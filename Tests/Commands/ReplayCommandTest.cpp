#include "Plugin/Shared/HexText.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <chrono>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

const std::string kTimeout = "Pipeline.Algs.HoldTimeoutMilliseconds";
const std::vector<std::string> kTap{R"("mayBegin")", R"("tap")"};
const std::vector<std::string> kHold{R"("mayBegin")", R"("holdStart")", R"("holdEnd")"};

class ReplayCommandTest : public testing::Test {
protected:
    [[nodiscard]] Outcome replayLines(Arguments arguments) const {
        arguments.insert(arguments.begin(), {"replay", "--jsonl"});
        Outcome outcome = velto().reading(contentOf(tap)).run(arguments);
        EXPECT_EQ(outcome.status, 0);
        return outcome;
    }
    [[nodiscard]] static std::vector<std::string> gesturesIn(const Outcome& outcome) {
        return membersOf(outcome.output, "gesture");
    }

    const TemporaryFolder folder;
    const std::string tap = folder.write("tap.json", SmallRecording().touchForMs(80).text());
    // The recording's own time-out makes a hold of the same touch.
    const std::string hold = folder.write("hold.json", SmallRecording()
                                                           .set("Algs.HoldTimeoutMilliseconds", "700")
                                                           .set("Algs.EnableTapSuppression", "false")
                                                           .set("Algs.HoldTimeoutMilliseconds", "30")
                                                           .touchForMs(80)
                                                           .text());
};

TEST_F(ReplayCommandTest, EachFileIsPlayedThroughAFreshPipelineWithItsOwnSettings) {
    const Outcome outcome = replayLines({hold, "-", tap});
    EXPECT_EQ(outcome.errors, "");
    const auto quoted = [](const std::string& path) { return '"' + path + '"'; };
    EXPECT_THAT(membersOf(outcome.output, "file"),
                ElementsAre(quoted(hold), quoted(hold), quoted(hold), quoted(hold), R"("-")", R"("-")", R"("-")",
                            quoted(tap), quoted(tap), quoted(tap)));
    EXPECT_THAT(gesturesIn(outcome), ElementsAre(kHold[0], kHold[1], kHold[2], kTap[0], kTap[1], kTap[0], kTap[1]));
    const auto stats = membersOf(outcome.output, "eventStats");
    ASSERT_THAT(stats, SizeIs(3));
    EXPECT_EQ(stats[1], stats[2]);
}

TEST_F(ReplayCommandTest, ASettingGivenReplacesTheRecordingsWritesAndTellsHowMany) {
    const Outcome outcome = replayLines({"--set", kTimeout + "=500", hold, tap});
    EXPECT_THAT(gesturesIn(outcome), ElementsAre(kTap[0], kTap[1], kTap[0], kTap[1]));
    EXPECT_EQ(outcome.errors, "velto: " + hold + ": left out 2 recorded writes of the keys given with --set\n");
    EXPECT_THAT(membersOf(outcome.output, "frames"), ElementsAre("13", "10")) << "those left out are counted";
}

TEST_F(ReplayCommandTest, AValueIsJSONAndTheLastOfAKeyCounts) {
    const auto gesturesWith = [&](const Arguments& values) {
        Arguments arguments{tap};
        for (const std::string& value : values)
            arguments.insert(arguments.end(), {"--set", kTimeout + "=" + value});
        return gesturesIn(replayLines(arguments));
    };
    EXPECT_THAT(gesturesWith({" 3e1 "}), kHold);
    EXPECT_THAT(gesturesWith({"30", "500"}), kTap);
}

TEST_F(ReplayCommandTest, ThePaceLastsAsLongAsItMustAndChangesNothingOfWhatIsFound) {
    const std::string atOnce = replayLines({tap}).output;
    for (const std::string speed : {"max", "2.5e2", "1e39"})
        EXPECT_EQ(replayLines({"--speed", speed, tap}).output, atOnce) << speed;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(replayLines({"--speed", "2", tap}).output, atOnce);
    EXPECT_THAT(std::chrono::steady_clock::now() - start, Ge(std::chrono::milliseconds(45)));
}

TEST_F(ReplayCommandTest, FramesArePlayedInTheOrderOfTime) {
    std::string reports;
    const SmallRecording recording = SmallRecording().touchForMs(80);
    for (const Frame& frame : recording.frames()) // the last in front
        reports = R"({"Timestamp":)" + std::to_string(frame.timestampNs) + R"(,"ReportData":")" +
                  Util::hexStringFromBytes(frame.report) + "\"}" + (reports.empty() ? "" : ",") + reports;
    const std::string inOrder = replayLines({tap}).output;
    folder.write("tap.json", R"({"Version":0,"Reports":[)" + reports + "]}");
    EXPECT_EQ(replayLines({tap}).output, inOrder);
}

TEST_F(ReplayCommandTest, AResetAndABadReportAreTold) {
    const std::string file = folder.write(
        "reset.json",
        SmallRecording().images(1, {}).send(firmwareEventReport(0)).send({0x03, 0x01}).send({}).images(1, {}).text());
    const std::string output = replayLines({"--describe", file}).output;
    const auto lines = linesOf(output);
    ASSERT_THAT(lines, SizeIs(5));
    EXPECT_EQ(lines[2], R"({"kind":"event","file":")" + file +
                            R"(","timeNs":10000000,"gesture":"firmwareReset","usagePage":65376,"usage":2})");
    EXPECT_THAT(membersOf(output, "frame"), ElementsAre("0", "0", "1"));
    EXPECT_THAT(membersOf(lines[1], "timeMs"), ElementsAre("0")) << "the reset, before its event";
    EXPECT_THAT(membersOf(output, "invalidReports"), ElementsAre("2"));
    EXPECT_THAT(membersOf(output, "images"), ElementsAre("2"));
    EXPECT_THAT(membersOf(output, "debugInfo"), ElementsAre(R"({"DisjointImageCount":0,"ResetCount":1})"));
}

TEST_F(ReplayCommandTest, WithoutLinesATableIsShownWithoutColoursWhereNoTerminalIs) {
    EXPECT_THAT(velto().run({"replay", tap, hold}),
                Ends(0, AllOf(HasSubstr(tap + "\n"), HasSubstr("1 x tap PlayPause\n"), HasSubstr(hold + "\n"),
                              HasSubstr("1 x hold PlayPause\n"), Not(HasSubstr("\x1b")))));
}

} // namespace
} // namespace VeltoTouch::Tests
