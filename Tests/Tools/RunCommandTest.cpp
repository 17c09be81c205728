#include "Host/HostedService.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <csignal>
#include <map>
#include <regex>

#include <gmock/gmock.h>

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
    return std::filesystem::path(VELTO_PROGRAM).parent_path().parent_path() / "Service/VeltoTouchHIDService.plugin";
}

// What the command says on standard error; the service's log stands there too.
std::string complaintsOf(const Outcome& outcome) {
    std::string complaints;
    for (const std::string& line : linesOf(outcome.errors))
        complaints += line.starts_with("velto: ") ? line + "\n" : "";
    return complaints;
}

// What was recognized: the events without their times, the counts of events and what the pipeline counted.
std::vector<std::string> findingsIn(const std::string& output) {
    std::vector<std::string> findings;
    for (const std::string& line : linesOf(output)) {
        if (line.find(R"("kind":"event")") != std::string::npos)
            findings.push_back(std::regex_replace(line, std::regex(R"("timeNs":\d+,)"), ""));
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
        EXPECT_THAT(outcome.errors, settings > 0 ? testing::Matcher<std::string>(HasSubstr(leftOut))
                                                 : testing::Matcher<std::string>(Not(HasSubstr("left out"))));
    }
}

TEST_F(RunCommandTest, SettingsReachTheServiceOrTheDeviceAndTheRecording) {
    const std::string saved = folder.path("saved.json");
    const Outcome outcome = runLines(
        {"--set", kTimeout + "=30", "--set", "Pipeline.Algs.Nothing=1", "--set", "Product=Mine", "--record", saved});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(membersOf(outcome.output, "gesture"), ElementsAre(R"("mayBegin")", R"("holdStart")", R"("holdEnd")"));
    EXPECT_THAT(outcome.errors, AllOf(HasSubstr("velto: Pipeline.Algs.Nothing: nothing knows this key\n"),
                                      HasSubstr("velto: Product: the device does not take this setting\n"),
                                      Not(HasSubstr("Product: nothing")), Not(HasSubstr("Nothing: the device"))));
    EXPECT_EQ(findingsIn(velto().run({"replay", "--jsonl", saved}).output), findingsIn(outcome.output));
}

TEST_F(RunCommandTest, PropertiesComeInTheOrderAskedBehindTheEventsAndTheSummaryLast) {
    const Arguments keys{"--get", "Version", "--get", "FactoryResetHoldDuration", "--get", kTimeout,
                         "--get", "Product", "--get", "Pipeline.Nothing"};
    const Outcome recorded = runLines(keys);
    EXPECT_THAT(membersOf(recorded.output, "kind"),
                ElementsAre(R"("event")", R"("event")", R"("property")", R"("property")", R"("property")",
                            R"("property")", R"("property")", R"("summary")"));
    EXPECT_THAT(membersOf(recorded.output, "key"),
                ElementsAre(R"("Version")", R"("FactoryResetHoldDuration")", '"' + kTimeout + '"', R"("Product")",
                            R"("Pipeline.Nothing")"));
    EXPECT_THAT(membersOf(recorded.output, "value"),
                ElementsAre("[19,0,0]", "null", "500", R"("Recorded Touch Surface")", "null"));
    EXPECT_THAT(membersOf(recorded.output, "reports"), ElementsAre("10"));
    EXPECT_THAT(membersOf(runLines(keys, "sim:idle:20").output, "value"),
                ElementsAre("[19,0,0]", "5000", "500", R"("Simulated Touch Surface")", "null"));
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
    const Outcome closed = velto().writingToAClosedPipe().run(endless);
    EXPECT_EQ(closed.status, 1);
    EXPECT_EQ(complaintsOf(closed), "");
    EXPECT_EQ(velto().run({"info", saved}).status, 0);
    const Outcome full = velto().writingTo("/dev/full").run(endless);
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(complaintsOf(full), "velto: standard output: No space left on device\n");
}

TEST_F(RunCommandTest, ARecordingThatCannotBeSavedIsToldBeforeTheRunOrBesideTheWholeSummary) {
    const std::string nowhere = folder.path("missing/out.json");
    const Outcome early = runLines({"--record", nowhere}, "sim:tap:A");
    EXPECT_EQ(early.status, 1);
    EXPECT_EQ(early.output, "");
    EXPECT_EQ(complaintsOf(early), "velto: " + nowhere + ": No such file or directory\n");

    const std::string noFile = folder.path(".");
    const Outcome late = runLines({"--record", noFile}, "sim:tap:A");
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

TEST_F(RunCommandTest, WrongUsageExitsWith2AndADeviceThatFailsWith1) {
    for (const Arguments& arguments : {
             Arguments{"--device", "mouse"},
             {"--device", "sim:"},
             {"--device", "sim:tap"},
             {"--device", "sim:tap:A,"},
             {"--device", "replay:"},
             {"--speed", "0"},
             {"--set", "=1"},
             {"--duration", "0"},
             {"--duration", "nan"},
             {"--record", "-"},
             {"gestures.json"},
         }) {
        Arguments all{"run"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Outcome outcome = velto().run(all);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
        EXPECT_NE(outcome.errors, "");
        EXPECT_EQ(outcome.output, "");
    }
    const std::string bad = folder.write("bad.json", "{");
    for (const auto& [device, message] : std::map<std::string, std::string>{
             {"/dev/hidraw777", "/dev/hidraw777: No such file or directory\n"},
             {"replay:" + bad, bad + ": "},
             {"replay:" + bad + "x", bad + "x: No such file or directory\n"},
         }) {
        const Outcome outcome = runLines({}, device);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(complaintsOf(outcome), StartsWith("velto: " + message));
        EXPECT_EQ(outcome.output, "");
    }
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
    struct Row {
        std::string from, to;
        std::string message; // what it begins with
    };
    for (const auto& [from, to, message] : {
             Row{"{", "[", "Info.json: no JSON object\n"},
             Row{"CFBundleExecutable", "Executable", "Info.json: no text under CFBundleExecutable\n"},
             Row{module, "below/" + module, "Info.json: no file name under CFBundleExecutable\n"},
             Row{module, "Nothing.so", "Nothing.so: cannot open shared object file: No such file or directory\n"},
             Row{module, "tap.json", "tap.json: "},
             Row{"CFPlugInTypes", "Types", "Info.json: no dictionary under CFPlugInTypes\n"},
             Row{"0516B563-B15B", "0516B563-B15C", "Info.json: no factory for HID services under CFPlugInTypes\n"},
             Row{"[\"", "[\"x", "Info.json: the factory under CFPlugInTypes is no UUID\n"},
             Row{"[\"CA", "[\"CB", "Info.json: no function for the factory under CFPlugInFactories\n"},
             Row{"ServiceFactory", "Service", module + " has no function VeltoTouchHIDService\n"},
             Row{"HIDMatching", "Matching", "Info.json: no dictionary under HIDMatching\n"},
             Row{"65376", "65377", "the plug-in is not for this device\n"},
             Row{"PrimaryUsage\"", "Unknown\"", "the plug-in is not for this device\n"},
         }) {
        const Outcome outcome = runWith(from, to);
        EXPECT_EQ(outcome.status, 1) << message;
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(complaintsOf(outcome), StartsWith("velto: " + plugIn + ": " + message));
    }
    const Outcome missing = runLines({"--plugin", folder.path("none")}, "sim:tap:A");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(complaintsOf(missing), "velto: " + folder.path("none") + ": Info.json: No such file or directory\n");
}

// A plug-in that keeps the calls that it gets and fails where it is told to.
struct FakePlugIn {
    static inline std::vector<std::string> calls;
    static inline std::string failing;

    static bool succeeds(const char* call) {
        calls.emplace_back(call);
        return failing != call;
    }
    static IOReturn status(const char* call) { return succeeds(call) ? kIOReturnSuccess : kIOReturnNoResources; }
    static ULONG release(void* self) { return succeeds(self == &plugIn ? "Release plug-in" : "Release service"), 1; }
    static HRESULT query(void*, REFIID, void** handle) {
        if (!succeeds("QueryInterface"))
            return E_NOINTERFACE;
        *handle = &service;
        return S_OK;
    }
    static void setEventCallback(void*, IOHIDServiceEventCallback callback, void* target, void* refcon) {
        calls.emplace_back("setEventCallback");
        deliver = [=](IOHIDEventRef event) { callback(target, refcon, &service, event, 0); };
    }
    // The last event is still under way when this returns.
    static void unschedule(void*, dispatch_queue_t queue) {
        calls.emplace_back("unscheduleFromDispatchQueue");
        dispatch_async(queue, [] {
            usleep(20'000);
            const auto event = IOHIDEventCreateVendorDefinedEvent(nullptr, 7, 1, 1, 0, {}, 0);
            deliver(event.get());
        });
    }
    static void* factory(CFTypeRef, CFUUIDRef) { return succeeds("factory") ? &plugIn : nullptr; }

    static inline std::function<void(IOHIDEventRef)> deliver;
    static inline IOCFPlugInInterfaceStruct plugInTable{
        ._reserved = nullptr,
        .QueryInterface = query,
        .AddRef = nullptr,
        .Release = release,
        .version = 1,
        .revision = 0,
        .Probe = [](void*, CFDictionaryRef, io_service_t, std::int32_t*) { return status("Probe"); },
        .Start = [](void*, CFDictionaryRef, io_service_t) { return status("Start"); },
        .Stop = [](void*) { return status("Stop"); }};
    static inline IOHIDServiceInterface2 serviceTable{
        ._reserved = nullptr,
        .QueryInterface = query,
        .AddRef = nullptr,
        .Release = release,
        .open = [](void*, IOOptionBits) { return succeeds("open"); },
        .close = [](void*, IOOptionBits) { calls.emplace_back("close"); },
        .copyProperty = [](void*, CFStringRef) -> CFPropertyListRef { return nullptr; },
        .setProperty = [](void*, CFStringRef, CFPropertyListRef) { return false; },
        .setEventCallback = setEventCallback,
        .scheduleWithDispatchQueue = [](void*, dispatch_queue_t) { calls.emplace_back("scheduleWithDispatchQueue"); },
        .unscheduleFromDispatchQueue = unschedule,
        .copyEvent = nullptr,
        .setOutputEvent = nullptr};
    static inline IOCFPlugInInterfaceStruct* plugIn = &plugInTable;
    static inline IOHIDServiceInterface2* service = &serviceTable;
};

TEST(HostedServiceTest, EndsByTheWholeSequenceOrByWhatHadBegun) {
    const auto properties = makeRef<Dictionary>(std::vector<Dictionary::Entry>());
    const auto live = [&](const std::string& failing) {
        FakePlugIn::calls.clear();
        FakePlugIn::failing = failing;
        HostedService service(FakePlugIn::factory, 1, properties.get(),
                              [](const Ref<HIDEvent>&) { FakePlugIn::calls.emplace_back("event"); });
        service.schedule();
    };
    live("");
    EXPECT_THAT(FakePlugIn::calls,
                ElementsAre("factory", "QueryInterface", "Probe", "Start", "open", "setEventCallback",
                            "scheduleWithDispatchQueue", "unscheduleFromDispatchQueue", "event", "close", "Stop",
                            "Release service", "Release plug-in"));
    struct Row {
        std::string failing;
        std::vector<std::string> end; // the calls after the one that failed
    };
    for (const auto& [failing, end] : {
             Row{"factory", {}},
             Row{"QueryInterface", {"Release plug-in"}},
             Row{"Probe", {"Release service", "Release plug-in"}},
             Row{"Start", {"Release service", "Release plug-in"}},
             Row{"open", {"Stop", "Release service", "Release plug-in"}},
         }) {
        EXPECT_THROW(live(failing), std::runtime_error) << failing;
        const auto failed = std::ranges::find(FakePlugIn::calls, failing);
        ASSERT_NE(failed, FakePlugIn::calls.end()) << failing;
        EXPECT_EQ(std::vector(failed + 1, FakePlugIn::calls.end()), end) << failing;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
