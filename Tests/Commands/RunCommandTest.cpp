#include "Plugin/Recording/PipelineRecording.h"
#include "Tests/Support/Lines.h"
#include "Tests/Support/Program.h"

#include <csignal>

#include <fmt/format.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;
using testing::StartsWith;

// What the command says on standard error; the service's log stands there too.
std::string complaintsOf(const Outcome& outcome) {
    std::string complaints;
    for (const std::string& line : linesOf(outcome.errors))
        complaints += line.starts_with("velto: ") ? line + "\n" : "";
    return complaints;
}

TEST(RunCommandTest, WhatTheRecordingDoesNotKeepIsTold) {
    const TemporaryFolder folder;
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
}

TEST(RunCommandTest, AnEndlessDeviceEndsAfterTheDurationOrWithASignal) {
    const TemporaryFolder folder;
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

} // namespace
} // namespace VeltoTouch::Tests
