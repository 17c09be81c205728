#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::SizeIs;
using testing::StartsWith;

TEST(UsageTest, WrongUsageIsToldAndExitsWith2) {
    const std::string text = SmallRecording().images(1, {}).text();
    for (const auto& [command, wrong] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"", {"", "play -"}},
             {"replay",
              {"", "--fast -", "--speed 0 -", "--speed=-1 -", "--speed nan -", "--speed 2x -", "--set =1 -",
               "--set Pipeline.Algs.X -"}},
             {"convert", {"- -", "- -o"}},
             {"trim", {"-", "--max many -", "--max 1.5 -", "--max=-1 -", "--max 18446744073709551616 -"}},
             {"render", {"--frame=-1 -", "--frame 4294967296 -"}},
             {"info", {"--json"}},
             {"run",
              {"--device mouse", "--device sim:", "--device sim:tap", "--device sim:tap:A,", "--device replay:",
               "--speed 0", "--set =1", "--duration 0", "--duration nan", "--record -", "gestures.json"}},
             {"serve", {"", "--device mouse"}},
             {"get", {"", "--device sim"}},
             {"set", {"", "Key", "=1"}},
             {"watch", {"--duration 0", "sim"}},
             {"record", {"recording.json"}},
         }) {
        for (const std::string& arguments : wrong) {
            std::istringstream words(command + " " + arguments);
            const Outcome outcome = velto().reading(text).run(
                {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()});
            EXPECT_THAT(outcome, Ends(2, "", testing::Ne(""))) << words.str();
        }
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
    EXPECT_THAT(commands, IsSupersetOf({"replay", "convert", "trim", "render", "info", "run", "serve"}));
    for (const std::string& command : commands)
        EXPECT_THAT(velto().run({command, "--help"}), Ends(0, AllOf(StartsWith("Example:\n  velto " + command + " "),
                                                                    HasSubstr("Usage: velto " + command + " "))));
}

TEST(UsageTest, ANumberWithAZeroInFrontIsDecimal) {
    const std::string text = SmallRecording().images(20, {}).text();
    const std::string trimmed = velto().reading(text).run({"trim", "--max", "010", "-"}).output;
    EXPECT_THAT(PipelineRecording(makeRef<Data>(trimmed).get()).frames(), SizeIs(10));
    EXPECT_THAT(velto().reading(text).run({"render", "--frame", "010", "-"}).output, StartsWith("# Image frame 10 "));
}

} // namespace
} // namespace VeltoTouch::Tests
