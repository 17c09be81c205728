#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <csignal>
#include <map>
#include <regex>

#include <fmt/format.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using testing::Not;
using testing::StartsWith;

const std::string kTimeout = "Pipeline.Algs.HoldTimeoutMilliseconds";

std::filesystem::path builtPlugIn() {
    return std::filesystem::path(VELTO_PROGRAM).parent_path().parent_path() /
           "lib/velto-touch/VeltoTouchHIDService.plugin";
}

// What the command says on standard error; the service's log stands there too.
std::string complaintsOf(const Outcome& outcome) {
    std::string complaints;
    for (const std::string& line : linesOf(outcome.errors))
        complaints += line.starts_with("velto: ") ? line + "\n" : "";
    return complaints;
}

// Matches a run that failed without any output but complaints.
auto Fails(const testing::Matcher<std::string>& complaints) {
    return AllOf(Ends(1, "", testing::_), testing::ResultOf("complaints", complaintsOf, complaints));
}

// What was recognized: the events without file and time, the counts of events and what the pipeline counted.
std::vector<std::string> findingsIn(const std::string& output) {
    std::vector<std::string> findings;
    for (const std::string& line : linesOf(output)) {
        if (line.find(R"("kind":"event")") != std::string::npos)
            findings.push_back(std::regex_replace(line, std::regex(R"("(file":"[^"]*"|timeNs":\d+),)"), ""));
    }
    for (const char* key : {"events", "debugInfo", "eventStats"}) {
        for (const std::string& member : membersOf(output, key))
            findings.push_back(member);
    }
    return findings;
}

// The same recording without its settings, and how many there were.
std::pair<std::string, std::size_t> reportsOf(const std::string& text) {
    const PipelineRecording recording(makeRef<Data>(text).get());
    PipelineRecording reports;
    std::size_t settings = 0;
    for (const Frame& frame : recording.frames()) {
        if (frame.type == Frame::Type::InputReport)
            reports.appendFrame(frame);
        settings += frame.type == Frame::Type::State ? 1 : 0;
    }
    return {std::string(reports.json()->bytes()), settings};
}

class RunCommandTest : public testing::Test {
protected:
    // Plays the touch, or another device, as fast as it goes.
    [[nodiscard]] Outcome runLines(Arguments arguments, const std::string& device = "") const {
        arguments.insert(arguments.begin(),
                         {"run", "--jsonl", "--speed", "max", "--device", device.empty() ? "replay:" + tap : device});
        return velto().run(arguments);
    }

    const TemporaryFolder folder;
    const std::string tap = folder.write("tap.json", SmallRecording().touchForMs(80).text());
};

TEST_F(RunCommandTest, TheServiceFindsInEveryRecordingsReportsWhatTheirReplayFinds) {
    for (const auto& entry : std::filesystem::directory_iterator(VELTO_RECORDINGS)) {
        if (entry.path().extension() != ".json")
            continue;
        SCOPED_TRACE(entry.path());
        const auto [reports, settings] = reportsOf(contentOf(entry.path()));
        const std::string saved = folder.path("saved.json");
        const Outcome outcome = runLines({"--record", saved}, "replay:" + entry.path().string());
        EXPECT_EQ(outcome.status, 0);
        const auto findings = findingsIn(outcome.output);
        EXPECT_EQ(findings, findingsIn(velto().reading(reports).run({"replay", "--jsonl", "-"}).output));
        EXPECT_EQ(findings, findingsIn(velto().run({"replay", "--jsonl", saved}).output));
        const std::string leftOut = ": left out " + std::to_string(settings) + " recorded settings\n";
        EXPECT_EQ(outcome.errors.find(leftOut) != std::string::npos, settings > 0) << outcome.errors;
    }
}

TEST_F(RunCommandTest, SettingsReachTheServiceOrTheDeviceAndTheRecording) {
    const std::string saved = folder.path("saved.json");
    const Outcome outcome = runLines({"--set", kTimeout + "=30", "Product=Mine", "--record", saved});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(membersOf(outcome.output, "gesture"), ElementsAre(R"("mayBegin")", R"("holdStart")", R"("holdEnd")"));
    EXPECT_EQ(complaintsOf(outcome), "velto: " + saved +
                                         ": at --speed max reports come without pauses, and the recording has none "
                                         "either\nvelto: Product: the device does not take this value\n");
    EXPECT_EQ(findingsIn(velto().run({"replay", "--jsonl", saved}).output), findingsIn(outcome.output));
}

TEST_F(RunCommandTest, PropertiesComeInTheOrderAskedBehindTheEventsAndTheSummaryLast) {
    const Arguments keys{"--get", "Version", "FactoryResetHoldDuration", "--get", kTimeout, "Product"};
    const Outcome outcome = runLines(keys);
    const std::string& recorded = outcome.output;
    std::vector<std::string> order = membersOf(recorded, "kind");
    order.erase(std::unique(order.begin(), order.end()), order.end());
    EXPECT_THAT(order, ElementsAre(R"("event")", R"("property")", R"("summary")"));
    EXPECT_THAT(membersOf(recorded, "key"), ElementsAre(R"("Version")", '"' + kTimeout + '"', R"("Product")"));
    EXPECT_THAT(membersOf(recorded, "value"), ElementsAre("[19,0,0]", "500", R"("Recorded Touch Surface")"));
    EXPECT_THAT(membersOf(recorded, "reports"), ElementsAre("10"));
    EXPECT_EQ(membersOf(recorded, "file"), std::vector(linesOf(recorded).size(), '"' + tap + '"'));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(complaintsOf(outcome), "velto: FactoryResetHoldDuration: there is no value under this key\n");
    const Outcome simulated = runLines(keys, "sim:idle:20");
    EXPECT_EQ(simulated.status, 0);
    EXPECT_THAT(membersOf(simulated.output, "file"), ElementsAre());
    EXPECT_THAT(membersOf(simulated.output, "value"),
                ElementsAre("[19,0,0]", "5000", "500", R"("Simulated Touch Surface")"));
}

TEST_F(RunCommandTest, ThePaceIsTheDevicesOwnAndTimeCountsFromTheStart) {
    const std::string output = velto().run({"run", "--jsonl", "--device", "replay:" + tap}).output;
    const auto times = membersOf(output, "timeNs");
    ASSERT_EQ(times.size(), 2U); // the second image and the last
    EXPECT_THAT(std::stod(times[0]), AllOf(Ge(10e6), Le(1e9)));
    EXPECT_THAT(std::stod(times[1]), AllOf(Ge(90e6), Le(1e9)));
}

TEST_F(RunCommandTest, TheSimulatedSurfaceHasAnAccelerometerWhoseSamplesAreRecordedAroundEvents) {
    const std::string saved = folder.path("saved.json");
    const auto recordingOf = [&](const std::string& device) {
        EXPECT_EQ(velto().run({"run", "--device", device, "--record", saved}).status, 0);
        return contentOf(saved);
    };
    EXPECT_THAT(recordingOf("sim:tap:A,idle:200"), HasSubstr(R"("Accel")"));
    EXPECT_THAT(recordingOf("replay:" + tap), Not(HasSubstr(R"("Accel")")));
}

TEST_F(RunCommandTest, WhatTheRecordingDoesNotKeepIsTold) {
    const std::string saved = folder.path("saved.json");
    const Outcome outcome =
        velto().run({"run", "--jsonl", "--device", "sim:idle:60000,tap:A", "--speed", "100", "--record", saved});
    const PipelineRecording recording(makeRef<Data>(contentOf(saved)).get());
    std::list<Frame> reports = recording.frames();
    EXPECT_EQ(reports.size(), kMaxRecordedFrames) << "of reports and accelerometer samples";
    reports.remove_if([](const Frame& frame) { return frame.type != Frame::Type::InputReport; });
    const auto lasts = static_cast<double>(reports.back().timestampNs - reports.front().timestampNs) / 1e9;
    const std::size_t dropped = std::stoul(membersOf(outcome.output, "reports").at(0)) - reports.size();
    EXPECT_THAT(complaintsOf(outcome),
                testing::MatchesRegex(fmt::format("velto: {}: the recording holds the newest {:.1f} s; the first "
                                                  "[0-9][.][0-9] s \\({} reports\\) were dropped\n",
                                                  saved, lasts, dropped)));

    EXPECT_EQ(complaintsOf(runLines({"--record", saved})),
              "velto: " + saved + ": at --speed max reports come without pauses, and the recording has none either\n");
}

TEST_F(RunCommandTest, AnEndlessDeviceEndsAfterTheDurationOrWithASignal) {
    const Outcome timed = velto().run({"run", "--jsonl", "--duration", "0.1"});
    EXPECT_EQ(timed.status, 0);
    EXPECT_THAT(membersOf(timed.output, "kind"), ElementsAre(R"("summary")"));
    EXPECT_THAT(std::stoi(membersOf(timed.output, "reports").at(0)), AllOf(Ge(1), Le(100)));

    for (const int signal : {SIGINT, SIGTERM}) {
        const std::string saved = folder.path("saved.json");
        const Outcome outcome =
            velto().signalledAfterALine(signal).run({"run", "--jsonl", "--speed", "20", "--record", saved});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(complaintsOf(outcome), "");
        const auto lines = linesOf(outcome.output);
        EXPECT_THAT(lines.back(), StartsWith(R"({"kind":"summary")"));
        EXPECT_THAT(membersOf(outcome.output, "events"), ElementsAre(std::to_string(lines.size() - 1)));
        const std::string again = velto().run({"replay", "--jsonl", saved}).output;
        EXPECT_EQ(membersOf(again, "gesture"), membersOf(outcome.output, "gesture"));
    }
}

TEST_F(RunCommandTest, AnOutputThatFailsEndsTheRunButTheRecordingIsSaved) {
    const std::string saved = folder.path("saved.json");
    const Arguments endless{"run", "--jsonl", "--speed", "20", "--record", saved};
    EXPECT_THAT(velto().writingToAClosedPipe().run(endless), Fails(""));
    EXPECT_EQ(velto().run({"info", saved}).status, 0);
    EXPECT_THAT(velto().writingTo("/dev/full").run(endless),
                Fails("velto: standard output: No space left on device\n"));
}

TEST_F(RunCommandTest, ARecordingThatCannotBeSavedIsToldBeforeTheRunOrBesideTheWholeSummary) {
    const std::string nowhere = folder.path("missing/out.json");
    EXPECT_THAT(runLines({"--record", nowhere}, "sim:tap:A"),
                Fails("velto: " + nowhere + ": No such file or directory\n"));

    const std::string noFile = folder.path(".");
    const Outcome late = velto().run({"run", "--jsonl", "--speed", "20", "--device", "sim:tap:A", "--record", noFile});
    EXPECT_EQ(late.status, 1);
    EXPECT_EQ(complaintsOf(late), "velto: " + noFile + ": Is a directory\n");
    EXPECT_THAT(membersOf(late.output, "events"), ElementsAre("2"));
}

TEST_F(RunCommandTest, WithoutLinesATableIsShownAndASummary) {
    const Outcome outcome =
        velto().run({"run", "--device", "sim:tap:play-pause,hold:volume-up", "--speed", "max", "--get", "Version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(complaintsOf(outcome), "");
    EXPECT_THAT(outcome.output, AllOf(StartsWith("sim:tap:play-pause,hold:volume-up\n"), HasSubstr("112 reports"),
                                      HasSubstr("1 x tap PlayPause\n"), HasSubstr("1 x hold VolumeUp\n"),
                                      HasSubstr("Version = [19,0,0]\n"), Not(HasSubstr("\x1b"))));
}

TEST_F(RunCommandTest, ADeviceThatFailsIsTold) {
    const std::string bad = folder.write("bad.json", "{");
    for (const auto& [device, message] : std::map<std::string, std::string>{
             {"/dev/hidraw777", "/dev/hidraw777: No such file or directory\n"},
             {"replay:" + bad, bad + ": "},
             {"replay:" + bad + "x", bad + "x: No such file or directory\n"},
         })
        EXPECT_THAT(runLines({}, device), Fails(StartsWith("velto: " + message)));
}

TEST_F(RunCommandTest, WhatIsWrongWithAPlugInIsTold) {
    const std::string manifest = contentOf(builtPlugIn() / "Info.json");
    const std::string module = "VeltoTouchHIDService.so";
    std::filesystem::create_symlink(builtPlugIn() / module, folder.path(module));
    const std::string plugIn = folder.path(".");
    const auto runWith = [&](const std::string& from, const std::string& to) {
        std::string changed = manifest;
        changed.replace(changed.find(from), from.size(), to);
        folder.write("Info.json", changed);
        return runLines({"--plugin", plugIn}, "sim:tap:A");
    };
    EXPECT_EQ(runWith("0516B563-B15B-11DA", "0516b563-b15b-11da").status, 0) << "a UUID in either case";
    for (const auto& [from, to, message] : std::vector<std::array<std::string, 3>>{
             {"{", "[", "Info.json: no JSON object\n"},
             {"CFBundleExecutable", "Executable", "Info.json: no text under CFBundleExecutable\n"},
             {module, "below/" + module, "Info.json: no file name under CFBundleExecutable\n"},
             {module, "Nothing.so", "Nothing.so: cannot open shared object file: No such file or directory\n"},
             {module, "tap.json", "tap.json: "},
             {"CFPlugInTypes", "Types", "Info.json: no dictionary under CFPlugInTypes\n"},
             {"0516B563-B15B", "0516B563-B15C", "Info.json: no factory for HID services under CFPlugInTypes\n"},
             {"[\"", "[\"x", "Info.json: the factory under CFPlugInTypes is no UUID\n"},
             {"[\"CA", "[\"CB", "Info.json: no function for the factory under CFPlugInFactories\n"},
             {"ServiceFactory", "Service", module + " has no function VeltoTouchHIDService\n"},
             {"HIDMatching", "Matching", "Info.json: no dictionary under HIDMatching\n"},
             {"65376", "65377", "the plug-in is not for this device\n"},
             {"PrimaryUsage\"", "Unknown\"", "the plug-in is not for this device\n"},
         })
        EXPECT_THAT(runWith(from, to), Fails(StartsWith("velto: " + plugIn + ": " + message))) << message;
    EXPECT_THAT(runLines({"--plugin", folder.path("none")}, "sim:tap:A"),
                Fails("velto: " + folder.path("none") + ": Info.json: No such file or directory\n"));
}

} // namespace
} // namespace VeltoTouch::Tests
