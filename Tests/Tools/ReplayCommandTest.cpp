#include "Shared/Util.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <chrono>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::SizeIs;

constexpr const char* kTimeout = "Pipeline.Algs.HoldTimeoutMilliseconds";

class ReplayCommandTest : public testing::Test {
protected:
    [[nodiscard]] Outcome replayLines(Arguments arguments) const {
        arguments.insert(arguments.begin(), {"replay", "--jsonl"});
        Outcome outcome = velto().run(arguments);
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

TEST_F(ReplayCommandTest, SettingsOfTheRecordingTakeEffect) {
    EXPECT_THAT(gesturesIn(replayLines({tap})), ElementsAre(R"("mayBegin")", R"("tap")"));
    const Outcome outcome = replayLines({hold});
    EXPECT_THAT(gesturesIn(outcome), ElementsAre(R"("mayBegin")", R"("holdStart")", R"("holdEnd")"));
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(ReplayCommandTest, ASettingGivenReplacesTheRecordingsWritesAndTellsHowMany) {
    const Outcome outcome = replayLines({"--set", std::string(kTimeout).append("=500"), hold, tap});
    EXPECT_THAT(gesturesIn(outcome), ElementsAre(R"("mayBegin")", R"("tap")", R"("mayBegin")", R"("tap")"));
    EXPECT_EQ(outcome.errors, "velto: " + hold + ": left out 2 recorded writes of the keys given with --set\n");
    EXPECT_THAT(membersOf(outcome.output, "frames"), ElementsAre("13", "10")) << "those left out are counted";
}

TEST_F(ReplayCommandTest, AValueIsJSONOrAStringAndTheLastOfAKeyCounts) {
    const auto holdsAt = [&](const std::string& value) {
        return gesturesIn(replayLines({"--set", std::string(kTimeout).append("=").append(value), tap})).size() == 3;
    };
    EXPECT_TRUE(holdsAt("30"));
    EXPECT_TRUE(holdsAt(" 3e1 "));
    EXPECT_TRUE(holdsAt("4294967326")) << "of a larger number the low 32 bits count";
    EXPECT_FALSE(holdsAt("500"));
    EXPECT_FALSE(holdsAt("-1"));
    const Outcome outcome =
        replayLines({"--set", std::string(kTimeout).append("=30"), "--set", std::string(kTimeout).append("=500"), tap});
    EXPECT_THAT(gesturesIn(outcome), SizeIs(2));
}

TEST_F(ReplayCommandTest, WarnsOfKeysThatNothingKnowsAndOfValuesThatAreNoNumbers) {
    struct Row {
        const char* key;
        const char* value;
        const char* warning;
    };
    constexpr const char* kUnknown = "nothing knows this key";
    constexpr const char* kNoNumber = "the value is no number and counts as 0";
    for (const auto& [key, value, warning] :
         {Row{"Pipeline.Algs.HoldTimeout", "1", kUnknown}, Row{"Algs.HoldTimeoutMilliseconds", "1", kUnknown},
          Row{"Pipeline.HoldTimeoutMilliseconds", "1", kUnknown},
          Row{"Pipeline.Algs.VirtualNormalizationFactors.23", "1", kUnknown},
          Row{"Pipeline.Algs.EnableTapSuppression", "yes", kNoNumber},
          Row{"Pipeline.Algs.ActivationThreshold", "\"200\"", kNoNumber}, Row{kTimeout, "", kNoNumber},
          Row{kTimeout, "null", kNoNumber}, Row{kTimeout, "[30]", kNoNumber}}) {
        const Outcome outcome = replayLines({"--set", std::string(key).append("=").append(value), tap});
        EXPECT_EQ(outcome.errors, std::string("velto: ").append(key).append(": ").append(warning).append("\n"));
    }
    for (const std::string silent :
         {"Pipeline.Algs.EnableTapSuppression=true", "Pipeline.Algs.VirtualNormalizationFactors.22=0.5",
          "Pipeline.Algs.ResetEventStats=now"})
        EXPECT_EQ(replayLines({"--set", silent, tap}).errors, "") << silent;
}

TEST_F(ReplayCommandTest, ThePaceChangesNothingOfWhatIsFound) {
    const std::string atOnce = replayLines({tap, hold}).output;
    for (const std::string speed : {"max", "1000", "2.5e2", "1e39"})
        EXPECT_EQ(replayLines({"--speed", speed, tap, hold}).output, atOnce) << speed;
}

TEST_F(ReplayCommandTest, APlayAtAPaceLastsAsLongAsItMust) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(gesturesIn(replayLines({"--speed", "2", tap})), SizeIs(2));
    EXPECT_THAT(std::chrono::steady_clock::now() - start, Ge(std::chrono::milliseconds(45)));
}

TEST_F(ReplayCommandTest, EachFileIsPlayedThroughAFreshPipeline) {
    const Outcome outcome = velto().reading(contentOf(tap)).run({"replay", "--jsonl", hold, "-", tap});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(membersOf(outcome.output, "file"), ElementsAre(R"("hold.json")", R"("-")", R"("tap.json")"));
    EXPECT_THAT(membersOf(outcome.output, "gesture"),
                ElementsAre(R"("mayBegin")", R"("holdStart")", R"("holdEnd")", R"("mayBegin")", R"("tap")",
                            R"("mayBegin")", R"("tap")"));
    const auto stats = membersOf(outcome.output, "eventStats");
    ASSERT_THAT(stats, SizeIs(3));
    EXPECT_EQ(stats[1], stats[2]);
}

TEST_F(ReplayCommandTest, FramesArePlayedInTheOrderOfTime) {
    std::list<Frame> frames = SmallRecording().touchForMs(80).frames();
    frames.reverse();
    std::string text = R"({"Version":0,"Reports":[)";
    for (const Frame& frame : frames)
        text.append(R"({"Timestamp":)")
            .append(std::to_string(frame.timestampNs))
            .append(R"(,"ReportData":")")
            .append(Util::hexStringFromBytes(frame.report))
            .append(frame.timestampNs == 1'000'000'000 ? "\"}]}" : "\"},");
    EXPECT_EQ(replayLines({folder.write("tap.json", text)}).output,
              replayLines({folder.write("tap.json", SmallRecording().touchForMs(80).text())}).output);
}

TEST_F(ReplayCommandTest, AResetAndABadReportAreTold) {
    const std::string file = folder.write(
        "reset.json",
        SmallRecording().images(1, {}).send(firmwareEventReport(0)).send({0x03, 0x01}).send({}).images(1, {}).text());
    const auto lines = linesOf(replayLines({"--describe", file}).output);
    ASSERT_THAT(lines, SizeIs(5));
    EXPECT_EQ(memberOf(lines[0], "frame") + memberOf(lines[0], "timeMs"), "01000");
    EXPECT_EQ(memberOf(lines[1], "frame") + memberOf(lines[1], "timeMs"), "00") << "the reset, before its event";
    EXPECT_EQ(lines[2], R"({"kind":"event","timeNs":10000000,"gesture":"firmwareReset","usagePage":65376,"usage":2})");
    EXPECT_EQ(memberOf(lines[3], "frame"), "1");
    EXPECT_EQ(memberOf(lines[4], "invalidReports"), "2");
    EXPECT_EQ(memberOf(lines[4], "images"), "2");
    EXPECT_EQ(memberOf(lines[4], "debugInfo"), R"({"DisjointImageCount":0,"ResetCount":1})");
}

TEST_F(ReplayCommandTest, WithoutLinesATableIsShown) {
    const Outcome outcome = velto().run({"replay", tap, hold});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, AllOf(HasSubstr(tap + "\n"), HasSubstr("1 x tap PlayPause\n"), HasSubstr(hold + "\n"),
                                      HasSubstr("1 x hold PlayPause\n")));
    EXPECT_EQ(outcome.output.find('\x1b'), std::string::npos) << "no colours where no terminal is";
}

} // namespace
} // namespace VeltoTouch::Tests
