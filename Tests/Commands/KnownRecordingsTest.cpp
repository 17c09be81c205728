#include "Tests/Support/Lines.h"
#include "Tests/Support/Program.h"

// Every NAME.json among the recordings and the samples gives the lines of NAME.expected.jsonl beside it; where these
// hold lines of frames, with --describe. Every line names the recording by its path, whatever the expected lines say of
// it. Adding a case is adding the two files.

namespace VeltoTouch::Tests {
namespace {

// The paths, without .json.
std::vector<std::string> knownRecordings() {
    std::vector<std::string> paths;
    for (const char* folder : {VELTO_RECORDINGS, VELTO_SAMPLES}) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() == ".json")
                paths.push_back((entry.path().parent_path() / entry.path().stem()).string());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
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
    const std::string& path = GetParam();
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
    std::string name = std::filesystem::path(row.param).filename();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
});

// By the commands in their README: the simulation is the same on every build.
TEST(SamplesTest, AreMadeAgainByteForByte) {
    const TemporaryFolder folder;
    int made = 0;
    for (const std::string& line : linesOf(contentOf(VELTO_SAMPLES "/README.md"))) {
        if (!line.starts_with("velto simulate "))
            continue;
        std::istringstream words(line.substr(line.find(' ')));
        Arguments arguments{std::istream_iterator<std::string>(words), {}};
        const std::string name = std::exchange(arguments.back(), folder.path("made.json"));
        EXPECT_THAT(velto().run(arguments), Ends(0, "")) << line;
        EXPECT_TRUE(contentOf(arguments.back()) == contentOf(VELTO_SAMPLES "/" + name)) << name;
        ++made;
    }
    EXPECT_EQ(made, 5);
}

} // namespace
} // namespace VeltoTouch::Tests
