#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

class BadInputTest : public testing::Test {
protected:
    // Runs the command over its files; the complaint is one line, and about the bad one. Gives the output.
    static std::string outputWhenRefused(Arguments command, const Arguments& files, const std::string& message) {
        SCOPED_TRACE(testing::PrintToString(command));
        command.insert(command.end(), files.begin(), files.end());
        const Outcome outcome = velto().reading("{").run(command);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.errors, "velto: " + files.front() + ": " + message + "\n");
        return outcome.output;
    }

    const TemporaryFolder folder;
    const std::string good = SmallRecording().touchForMs(80).text();
    const std::string goodFile = folder.write("good.json", good);
    const std::string noContainer = "migrateSerializedContainer failed: invalid container";
};

TEST_F(BadInputTest, IsToldInOneLineAndLeavesTheOutputFileAsItWas) {
    struct Row {
        const char* name;
        std::string content;
        std::string message;
    };
    const std::string old = folder.write("old.json", "as it was");
    const std::string deep = std::string(200'000, '[') + std::string(200'000, ']');
    for (const auto& [name, content, message] : {
             Row{"empty", "", noContainer},
             Row{"blanks only", std::string(3'000'000, ' '), noContainer},
             Row{"truncated", good.substr(0, 1000), noContainer},
             Row{"NUL behind it", good + '\0', noContainer},
             Row{"deep nesting", deep, noContainer},
             Row{"deep value", R"({"Version":2,"Frames":[{"Value":)" + deep + "}]}", noContainer},
             Row{"wrong type", R"({"Version":2,"Frames":[{"Type":1}]})", "invalid frame type"},
         }) {
        SCOPED_TRACE(name);
        const std::string bad = folder.write("bad.json", content);
        outputWhenRefused({"convert", "-o", old}, {bad}, message);
        outputWhenRefused({"trim", "--max", "1", "-o", folder.path("new.json")}, {bad}, message);
        EXPECT_EQ(contentOf(old), "as it was");
        EXPECT_THAT(folder.names(), ElementsAre("bad.json", "good.json", "old.json"));
    }
}

TEST_F(BadInputTest, IsRefusedByEveryCommandInTheWordsOfTheSystemAndOtherFilesAreStillHandled) {
    for (const auto& [bad, message] : std::vector<std::pair<std::string, std::string>>{
             {folder.write("bad.json", good.substr(0, 1000)), noContainer},
             {"-", noContainer},
             {folder.path("missing.json"), "No such file or directory"},
             {folder.path(""), "Is a directory"},
             {goodFile + "/below", "Not a directory"},
         }) {
        for (const Arguments& command :
             {Arguments{"replay"}, {"replay", "--jsonl", "--describe"}, {"info"}, {"info", "--json"}}) {
            Arguments withGoodFile = command;
            withGoodFile.push_back(goodFile);
            EXPECT_EQ(outputWhenRefused(command, {bad, goodFile}, message), velto().run(withGoodFile).output);
        }
        for (const Arguments& command : {Arguments{"convert"}, {"trim", "--max", "1"}, {"render"}})
            EXPECT_EQ(outputWhenRefused(command, {bad}, message), "");
    }
}

} // namespace
} // namespace VeltoTouch::Tests
