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

// What each command refuses of keys and values, before it does anything: no device, plug-in or bus is there.
TEST(UsageTest, WhatThePipelineHasNoUseForIsToldWithWhatIsWanted) {
    const std::string kAlgs = "Pipeline.Algs.";
    const std::string kWhole = "a whole number from 0 to 4294967295 is wanted";
    const std::string kNumber = "a number from -3.4e38 to 3.4e38 is wanted";
    const std::string kSwitch = "true, false, 0 or 1 is wanted";
    const std::string kMeant = "unknown key (did you mean 'Pipeline.Algs.HoldTimeoutMilliseconds'?)";
    const auto refuses = [](const Arguments& arguments, const std::string& what, const std::string& message) {
        EXPECT_THAT(
            velto().run(arguments),
            Ends(2, "", "velto: " + what + ": " + message + " (velto " + arguments[0] + " --help says more)\n"));
    };
    for (const auto& [setting, message] : std::vector<std::pair<std::string, std::string>>{
             {kAlgs + "HoldTimeoutMilliseconds=-7", kWhole},
             {kAlgs + "HoldTimeoutMilliseconds=0.5", kWhole},
             {kAlgs + "HoldTimeoutMilliseconds=4294967296", kWhole},
             {kAlgs + "HoldTimeoutMilliseconds=true", kWhole},
             {kAlgs + "HoldTimeoutMilliseconds=", kWhole},
             {kAlgs + "ActivationThreshold=3.5e38", kNumber},
             {kAlgs + "VirtualNormalizationFactors.0=true", kNumber},
             {kAlgs + "VirtualNormalizationFactors.23=1", "factors are numbered 0 to 22"},
             {kAlgs + "VirtualNormalizationFactors.N=1", "factors are numbered 0 to 22"},
             {kAlgs + "VirtualNormalizationFactors.03=1", "factors are numbered 0 to 22"},
             {kAlgs + "EnableTapSuppression=2", kSwitch},
             {kAlgs + "EnableHoldSuppression=yes", kSwitch},
             {kAlgs + "EventStats=1", "it is read only"},
             {"Pipeline.DebugInfo=1", "it is read only"},
             {kAlgs + "holdTimeoutMillisecodns=1", kMeant},
             {"Pipeline.HoldTimeout=1", "unknown key"},
         }) {
        refuses({"set", setting}, setting, message);
        refuses({"run", "--plugin", "/nowhere", "--set", setting}, setting, message);
        refuses({"replay", "--set", setting, "/nowhere"}, setting, message);
    }
    refuses({"replay", "--set", "HoldTimeoutMilliseconds=1", "/nowhere"}, "HoldTimeoutMilliseconds=1", kMeant);
    refuses({"replay", "--set", "Product=1", "/nowhere"}, "Product=1", "unknown key");
    for (const auto& [key, message] : {std::pair(kAlgs + "HoldTimeout", kMeant),
                                       {kAlgs + "ResetEventStats", "it is write only"},
                                       {"Pipeline.Nothing", "unknown key"}}) {
        refuses({"get", "Version", key}, key, message);
        refuses({"run", "--plugin", "/nowhere", "--get", key}, key, message);
    }
}

TEST(UsageTest, WhatIsAllowedIsTakenAndWhatIsSurelyNotMeantIsWarnedOf) {
    const std::string text = SmallRecording().images(1, {}).text();
    for (const auto& [setting, warning] : std::vector<std::pair<std::string, std::string>>{
             {"HoldTimeoutMilliseconds=4294967295", ""},
             {"HoldTimeoutMilliseconds=1e3", ""},
             {"ActivationThreshold=3.4e38", ""},
             {"ActivationThreshold=1e-50", "0 or less is allowed, but every pad's value is divided by it"},
             {"ActivationThreshold=-1", "0 or less is allowed, but every pad's value is divided by it"},
             {"VirtualNormalizationFactors.22=0.5", "it is stored, but recognition keeps the factors it started with"},
             {"EnableTapSuppression=true", ""},
             {"EnableTapSuppression=0", ""},
             {"ResetEventStats=now", ""},
         }) {
        const std::string key = "Pipeline.Algs." + setting.substr(0, setting.find('='));
        EXPECT_THAT(velto().reading(text).run({"replay", "--set", "Pipeline.Algs." + setting, "-"}),
                    Ends(0, testing::Ne(""), warning.empty() ? "" : "velto: " + key + ": " + warning + "\n"));
    }
}

TEST(UsageTest, AMistypedNameIsToldWithTheOneThatWasMeant) {
    for (const auto& [arguments, message] : std::vector<std::pair<Arguments, std::string>>{
             {{"foo"}, "unknown command 'foo' (did you mean 'info'?) (velto --help says more)"},
             {{"rnu"}, "unknown command 'rnu' (did you mean 'run'?) (velto --help says more)"},
             {{"help", "repaly"}, "unknown command 'repaly' (did you mean 'replay'?) (velto help --help says more)"},
             {{"play", "-"}, "unknown command 'play' (did you mean 'replay'?) (velto --help says more)"},
             {{"frobnicate"}, "unknown command 'frobnicate' (velto --help says more)"},
             {{"--versoin"}, "unknown option '--versoin' (did you mean '--version'?) (velto --help says more)"},
             {{"replay", "--sped=2", "-"},
              "unknown option '--sped' (did you mean '--speed'?) (velto replay --help says more)"},
             {{"watch", "sim"}, "unexpected argument 'sim' (velto watch --help says more)"},
         })
        EXPECT_THAT(velto().run(arguments), Ends(2, "", "velto: " + message + "\n"));
}

TEST(UsageTest, HelpBeginsWithAnExampleForEveryCommand) {
    const std::string help = velto().run({"--help"}).output;
    EXPECT_THAT(help, StartsWith("Example:\n  velto "));
    Arguments commands;
    for (const std::string& line : linesOf(help.substr(help.find("Subcommands:")))) {
        if (line.starts_with("  ") && line[2] != ' ')
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    EXPECT_THAT(commands, IsSupersetOf({"replay", "convert", "trim", "render", "info", "run", "serve", "help"}));
    for (const std::string& command : commands) {
        const Outcome outcome = velto().run({command, "--help"});
        EXPECT_THAT(outcome, Ends(0, AllOf(StartsWith("Example:\n  velto " + command),
                                           HasSubstr("Usage: velto " + command + " "))));
        EXPECT_THAT(velto().run({"help", command}), Ends(0, outcome.output));
    }
    EXPECT_THAT(velto().run({"simulate", "--help"}).output, HasSubstr("at most 5000"));
    EXPECT_THAT(velto().run({"help"}), Ends(0, help));
    EXPECT_THAT(velto().run({"--version"}), Ends(0, testing::MatchesRegex("velto [0-9]+\\.[0-9]+\\.[0-9]+\n")));
}

TEST(UsageTest, ANumberWithAZeroInFrontIsDecimal) {
    const std::string text = SmallRecording().images(20, {}).text();
    const std::string trimmed = velto().reading(text).run({"trim", "--max", "010", "-"}).output;
    EXPECT_THAT(PipelineRecording(makeRef<Data>(trimmed).get()).frames(), SizeIs(10));
    EXPECT_THAT(velto().reading(text).run({"render", "--frame", "010", "-"}).output, StartsWith("# Image frame 10 "));
}

} // namespace
} // namespace VeltoTouch::Tests
