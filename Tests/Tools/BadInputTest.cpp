#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

constexpr const char* kNoContainer = "migrateSerializedContainer failed: invalid container";

struct BadInput {
    const char* name;
    std::string content;
    const char* message;
};
void PrintTo(const BadInput& row, std::ostream* out) { *out << row.name; }

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

std::string withValue(const std::string& value) {
    return R"({"Version":2,"Frames":[{"Type":"State","Timestamp":1,"Key":"k","Value":)" + value + "}]}";
}

class BadInputTest : public testing::TestWithParam<BadInput> {
protected:
    // The complaint is one line, and about the file.
    static void expectRefused(const Outcome& outcome, const std::string& file, const std::string& message) {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.errors, "velto: " + file + ": " + message + "\n");
    }

    // Runs every command over `bad`; those that take several files over a good one too.
    void expectRefusedByEveryCommand(const std::string& bad, const std::string& message) const {
        for (const Arguments& command :
             {Arguments{"replay"}, {"replay", "--jsonl", "--describe"}, {"info"}, {"info", "--json"}}) {
            SCOPED_TRACE(testing::PrintToString(command));
            Arguments good = command;
            good.push_back(goodFile);
            Arguments both = command;
            both.insert(both.end(), {bad, goodFile});
            const Outcome outcome = velto().run(both);
            expectRefused(outcome, bad, message);
            EXPECT_EQ(outcome.output, velto().run(good).output) << "the other file is still handled";
        }
        for (const Arguments& command : {Arguments{"convert"}, {"trim", "--max", "1"}, {"render"}}) {
            SCOPED_TRACE(testing::PrintToString(command));
            Arguments alone = command;
            alone.push_back(bad);
            const Outcome outcome = velto().run(alone);
            expectRefused(outcome, bad, message);
            EXPECT_EQ(outcome.output, "");
        }
    }

    const TemporaryFolder folder;
    const std::string goodFile = folder.write("good.json", SmallRecording().touchForMs(80).text());
};

TEST_P(BadInputTest, IsToldInOneLineAndGivesNothing) {
    expectRefusedByEveryCommand(folder.write("bad.json", GetParam().content), GetParam().message);
}

TEST_P(BadInputTest, LeavesTheOutputFileAsItWas) {
    const std::string bad = folder.write("bad.json", GetParam().content);
    const std::string old = folder.write("old.json", "as it was");
    expectRefused(velto().run({"convert", bad, "-o", old}), bad, GetParam().message);
    EXPECT_EQ(contentOf(old), "as it was");
    expectRefused(velto().run({"trim", "--max", "1", bad, "-o", folder.path("new.json")}), bad, GetParam().message);
    EXPECT_THAT(folder.names(), ElementsAre("bad.json", "good.json", "old.json"));
}

INSTANTIATE_TEST_SUITE_P(
    Files, BadInputTest,
    testing::Values(BadInput{"Empty", "", kNoContainer}, //
                    BadInput{"BlanksOnly", std::string(3'000'000, ' '), kNoContainer},
                    BadInput{"NoJSON", "Frames of no kind", kNoContainer},
                    BadInput{"Truncated", SmallRecording().touchForMs(80).text().substr(0, 1000), kNoContainer},
                    BadInput{"NulBehindIt", withValue("1") + '\0', kNoContainer},
                    BadInput{"InvalidUTF8", withValue("\"\xFF\""), kNoContainer},
                    BadInput{"SurrogateHalf", withValue("\"\\ud800\""), kNoContainer},
                    BadInput{"NumberBeyond64Bits", withValue("18446744073709551616"), kNoContainer},
                    BadInput{"NumberBeyondDouble", withValue("1e400"), kNoContainer},
                    BadInput{"DeepNesting", nested(200'000), kNoContainer},
                    BadInput{"DeepValue", withValue(nested(200'000)), kNoContainer},
                    BadInput{"UnknownVersion", R"({"Version":3})",
                             "migrateSerializedContainer failed: invalid container version: 3"},
                    BadInput{"WrongType", R"({"Version":2,"Frames":[{"Type":"State","Timestamp":"1"}]})",
                             "invalid frame timestamp"},
                    BadInput{"WrongHex",
                             R"({"Version":2,"Frames":[{"Type":"InputReport","Timestamp":1,"Data":"0100"}]})",
                             "invalid hex string"}),
    [](const auto& row) { return row.param.name; });

using NoFileTest = BadInputTest;

TEST_F(NoFileTest, WhatCannotBeReadIsToldInTheWordsOfTheSystem) {
    expectRefusedByEveryCommand(folder.path("missing.json"), "No such file or directory");
    expectRefusedByEveryCommand(folder.path(""), "Is a directory");
    expectRefusedByEveryCommand(goodFile + "/below", "Not a directory");
}

TEST_F(NoFileTest, TheStandardInputIsToldByItsDash) {
    const Outcome outcome = velto().reading("{").run({"replay", "-"});
    expectRefused(outcome, "-", kNoContainer);
    EXPECT_EQ(outcome.output, "");
}

} // namespace
} // namespace VeltoTouch::Tests
