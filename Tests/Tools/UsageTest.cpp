#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::SizeIs;
using testing::StartsWith;

TEST(UsageTest, WrongUsageIsToldAndExitsWith2) {
    const std::string text = SmallRecording().images(1, {}).text();
    for (const Arguments& arguments : {
             Arguments{},
             {"play", "-"},
             {"replay"},
             {"replay", "--fast", "-"},
             {"replay", "--speed", "0", "-"},
             {"replay", "--speed=-1", "-"},
             {"replay", "--speed", "nan", "-"},
             {"replay", "--speed", "2x", "-"},
             {"replay", "--set", "Pipeline.Algs.X", "-"},
             {"replay", "--set", "=1", "-"},
             {"convert", "-", "-"},
             {"convert", "-", "-o"},
             {"trim", "-"},
             {"trim", "--max", "many", "-"},
             {"trim", "--max", "1.5", "-"},
             {"trim", "--max=-1", "-"},
             {"trim", "--max", "18446744073709551616", "-"},
             {"render", "--frame=-1", "-"},
             {"render", "--frame", "4294967296", "-"},
             {"info", "--json"},
         }) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome outcome = velto().reading(text).run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_NE(outcome.errors, "");
    }
}

TEST(UsageTest, HelpBeginsWithAnExampleForEveryCommand) {
    const std::string help = velto().run({"--help"}).output;
    EXPECT_THAT(help, StartsWith("Example:\n  velto "));
    Arguments commands;
    for (const std::string& line : linesOf(help.substr(help.find("Subcommands:")))) {
        if (line.starts_with("  ") && line[2] != ' ')
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    EXPECT_THAT(commands, IsSupersetOf({"replay", "convert", "trim", "render", "info"}));
    for (const std::string& command : commands) {
        const Outcome outcome = velto().run({command, "--help"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.output, AllOf(StartsWith("Example:\n  velto " + command + " "),
                                          HasSubstr("Usage: velto " + command + " ")));
        EXPECT_EQ(outcome.errors, "");
    }
}

TEST(UsageTest, ANumberWithAZeroInFrontIsDecimal) {
    const std::string text = SmallRecording().images(20, {}).text();
    const std::string trimmed = velto().reading(text).run({"trim", "--max", "010", "-"}).output;
    EXPECT_THAT(PipelineRecording(makeRef<Data>(trimmed).get()).frames(), SizeIs(10));
    EXPECT_THAT(velto().reading(text).run({"render", "--frame", "010", "-"}).output, StartsWith("# Image frame 10 "));
}

} // namespace
} // namespace VeltoTouch::Tests
