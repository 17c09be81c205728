#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;

struct Usage {
    const char* name;
    Arguments arguments;
};
void PrintTo(const Usage& row, std::ostream* out) { *out << row.name; }

class WrongUsageTest : public testing::TestWithParam<Usage> {};

TEST_P(WrongUsageTest, IsToldAndExitsWith2) {
    const Outcome outcome = velto().reading(SmallRecording().images(1, {}).text()).run(GetParam().arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors, "");
}

INSTANTIATE_TEST_SUITE_P(CommandLines, WrongUsageTest,
                         testing::Values(Usage{"NoCommand", {}},                                //
                                         Usage{"UnknownCommand", {"play", "-"}},                //
                                         Usage{"UnknownOption", {"replay", "--fast", "-"}},     //
                                         Usage{"ReplayOfNothing", {"replay"}},                  //
                                         Usage{"SpeedZero", {"replay", "--speed", "0", "-"}},   //
                                         Usage{"SpeedNegative", {"replay", "--speed=-1", "-"}}, //
                                         Usage{"SpeedNoNumber", {"replay", "--speed", "nan", "-"}},
                                         Usage{"SpeedWord", {"replay", "--speed", "2x", "-"}},
                                         Usage{"SpeedMissing", {"replay", "-", "--speed"}},
                                         Usage{"SetWithoutValue", {"replay", "--set", "Pipeline.Algs.X", "-"}},
                                         Usage{"SetWithoutKey", {"replay", "--set", "=1", "-"}},
                                         Usage{"ConvertOfTwo", {"convert", "-", "-"}},
                                         Usage{"OutputMissing", {"convert", "-", "-o"}},
                                         Usage{"TrimWithoutBound", {"trim", "-"}},
                                         Usage{"BoundWord", {"trim", "--max", "many", "-"}},
                                         Usage{"BoundFraction", {"trim", "--max", "1.5", "-"}},
                                         Usage{"BoundNegative", {"trim", "--max=-1", "-"}},
                                         Usage{"BoundTooLarge", {"trim", "--max", "18446744073709551616", "-"}},
                                         Usage{"FrameNegative", {"render", "--frame=-1", "-"}},
                                         Usage{"FrameTooLarge", {"render", "--frame", "4294967296", "-"}},
                                         Usage{"InfoOfNothing", {"info", "--json"}}),
                         [](const auto& row) { return row.param.name; });

// The commands that the program's help lists.
Arguments commandsIn(const std::string& help) {
    Arguments commands;
    for (const std::string& line : linesOf(help.substr(help.find("Subcommands:")))) {
        if (line.starts_with("  ") && line[2] != ' ')
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    return commands;
}

TEST(HelpTest, BeginsWithAnExampleForEveryCommand) {
    const std::string help = velto().run({"--help"}).output;
    EXPECT_THAT(help, StartsWith("Example:\n  velto "));
    const Arguments commands = commandsIn(help);
    EXPECT_THAT(commands, IsSupersetOf({"replay", "convert", "trim", "render", "info"}));
    for (const std::string& command : commands) {
        const Outcome outcome = velto().run({command, "--help"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.output, StartsWith("Example:\n  velto " + command + " "));
        EXPECT_THAT(outcome.output, HasSubstr("Usage: velto " + command + " "));
        EXPECT_EQ(outcome.errors, "");
    }
}

TEST(NumberOptionTest, ANumberWithAZeroInFrontIsDecimal) {
    const std::string text = SmallRecording().images(20, {}).text();
    const auto countOf = [](const std::string& words, const std::string& output) {
        std::size_t count = 0;
        for (auto place = output.find(words); place != std::string::npos; place = output.find(words, place + 1))
            ++count;
        return count;
    };
    EXPECT_EQ(countOf("InputReport", velto().reading(text).run({"trim", "--max", "010", "-"}).output), 10U);
    EXPECT_THAT(velto().reading(text).run({"render", "--frame", "010", "-"}).output, StartsWith("# Image frame 10 "));
}

} // namespace
} // namespace VeltoTouch::Tests
