#include "Tests/Stories/Clock.h"
#include "Tests/Stories/Comparison.h"
#include "Tests/Stories/Teller.h"
#include "Tests/Support/Program.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// More of them: VELTO_STORY_SEED and VELTO_STORY_FRAMES.
std::uint64_t chosen(const char* variable, std::uint64_t usual) {
    const char* text = std::getenv(variable);
    return text == nullptr ? usual : std::strtoull(text, nullptr, 10);
}
const std::uint64_t kSeed = chosen("VELTO_STORY_SEED", 1);
const std::uint64_t kFrames = chosen("VELTO_STORY_FRAMES", 60'000);

// The time base is fetched once in the life of a process: a process each. Gives the exit status.
[[noreturn]] void agreeOn(mach_timebase_info_data_t timebase, std::uint64_t seed, std::uint64_t wantedFrames) {
    storyClock().timebase = timebase;
    for (std::uint64_t frames = 0; frames < wantedFrames; ++seed) {
        Choices choices(seed);
        const Story story = tellStory(choices, 120);
        const Comparison comparison = compare(story);
        frames += comparison.frames;
        if (comparison.difference.empty())
            continue;
        const Story shorter = shortened(story);
        std::cerr << "seed " << seed << ": " << compare(shorter).difference << "\n" << textOf(shorter);
        std::_Exit(1);
    }
    std::_Exit(0);
}

struct Row {
    const char* name;
    mach_timebase_info_data_t timebase;
};
class StoriesTest : public testing::TestWithParam<Row> {};

TEST_P(StoriesTest, AgreeWithTheReference) {
    EXPECT_EXIT(agreeOn(GetParam().timebase, kSeed, kFrames), testing::ExitedWithCode(0), "");
}
INSTANTIATE_TEST_SUITE_P(Timebases, StoriesTest,
                         testing::Values(Row{"Nanoseconds", {1, 1}}, Row{"Slower", {125, 3}}, Row{"Faster", {3, 125}},
                                         Row{"Broken", {0, 1}}),
                         [](const auto& row) { return row.param.name; });

[[noreturn]] void agreeOnKnownRecordings() {
    std::uint64_t frames = 0;
    for (const auto& file : std::filesystem::directory_iterator(VELTO_RECORDINGS)) {
        if (file.path().extension() != ".json")
            continue;
        const Comparison comparison = compareContainer(contentOf(file.path()));
        frames += comparison.frames;
        if (comparison.difference.empty())
            continue;
        std::cerr << file.path().filename() << ": " << comparison.difference << "\n";
        std::_Exit(1);
    }
    std::_Exit(frames > 1000 ? 0 : 1);
}

TEST(KnownRecordingsStoriesTest, AgreeWithTheReference) {
    EXPECT_EXIT(agreeOnKnownRecordings(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace VeltoTouch::Tests
