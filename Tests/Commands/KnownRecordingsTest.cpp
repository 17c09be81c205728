#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

// Every NAME.json among the recordings gives the lines of NAME.expected.jsonl beside it; where these hold lines of
// frames, with --describe. Every line names the recording by its path, whatever the expected lines say of it. Adding a
// case is adding the two files.

namespace VeltoTouch::Tests {
namespace {

std::vector<std::string> knownRecordings() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(VELTO_RECORDINGS)) {
        if (entry.path().extension() == ".json")
            names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The members of a line's object but the file it belongs to.
Ref<Value> withoutFile(const std::string& line) {
    const Ref<Value> object = JSON::parse(line);
    const auto members = as<Dictionary>(object)->entries();
    std::vector<Dictionary::Entry> others(members.begin(), members.end());
    std::erase_if(others, [](const Dictionary::Entry& entry) { return entry.key == "file"; });
    return makeRef<Dictionary>(std::move(others));
}

class KnownRecordingTest : public testing::TestWithParam<std::string> {};

TEST_P(KnownRecordingTest, GivesTheExpectedGestures) {
    const std::string path = std::string(VELTO_RECORDINGS "/").append(GetParam());
    const std::string expected = contentOf(path + ".expected.jsonl");
    Arguments arguments{"replay", "--jsonl", path + ".json"};
    if (expected.find(R"("kind":"frame")") != std::string::npos)
        arguments.emplace_back("--describe");

    const Outcome outcome = velto().run(arguments);
    EXPECT_THAT(outcome, Ends(0, testing::_));
    const auto lines = linesOf(outcome.output);
    const auto expectedLines = linesOf(expected);
    ASSERT_EQ(lines.size(), expectedLines.size());
    EXPECT_EQ(membersOf(outcome.output, "file"), std::vector(lines.size(), '"' + path + ".json\""));
    for (std::size_t i = 0; i < lines.size(); ++i)
        ASSERT_TRUE(CFEqual(withoutFile(lines[i]).get(), withoutFile(expectedLines[i]).get()))
            << "line " << i + 1 << "\nexpected " << expectedLines[i] << "\nand came " << lines[i];
}

INSTANTIATE_TEST_SUITE_P(Recordings, KnownRecordingTest, testing::ValuesIn(knownRecordings()), [](const auto& row) {
    std::string name = row.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
});

} // namespace
} // namespace VeltoTouch::Tests
