#include "Tests/Stories/Clock.h"
#include "Tests/Stories/Comparison.h"
#include "Tests/Stories/Containers.h"
#include "Tests/Stories/Differences.h"
#include "Tests/Stories/Teller.h"
#include "Tests/Support/Program.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// scripts/compare-with-reference chooses others: VELTO_STORY_SEED, VELTO_STORY_FRAMES or, in their place,
// VELTO_STORY_SECONDS.
std::uint64_t chosen(const char* variable, std::uint64_t usual) {
    const char* text = std::getenv(variable);
    return text == nullptr ? usual : std::strtoull(text, nullptr, 10);
}
const std::uint64_t kSeed = chosen("VELTO_STORY_SEED", 1);
const std::uint64_t kFrames = chosen("VELTO_STORY_FRAMES", 90'000);
constexpr int kContainersPerStory = 30;
const std::uint64_t kSeconds = chosen("VELTO_STORY_SECONDS", 0);

[[noreturn]] void fail(const std::string& text) {
    std::cout << text << std::endl;
    std::_Exit(1);
}

// The time base is fetched once in the life of a process: a process each. Gives the exit status.
[[noreturn]] void agreeOn(mach_timebase_info_data_t timebase) {
    using Clock = std::chrono::steady_clock;
    storyClock().timebase = timebase;
    const auto end = Clock::now() + std::chrono::seconds(kSeconds);
    std::uint64_t seed = kSeed + (std::uint64_t{timebase.numer} << 40U); // other stories on each
    std::uint64_t frames = 0;
    std::uint64_t count = 0;
    for (; kSeconds != 0 ? Clock::now() < end : frames < kFrames; ++seed, ++count) {
        Choices choices(seed);
        const Story story = tellStory(choices, 120, seed % 3 == 0 ? 120 : 4);
        const Comparison comparison = compare(story);
        if (!comparison.difference.empty()) {
            const Story shorter = shortened(story);
            fail(compare(shorter).difference + "\n" + textOf(shorter));
        }
        frames += comparison.frames;
        for (int i = 0; i < kContainersPerStory; ++i) {
            const std::string container = tellContainer(choices);
            if (compareContainer(container).difference.empty())
                continue;
            const std::string shorter = shortened(container);
            fail(compareContainer(shorter).difference + "\ncompareContainer(" + quoted(shorter) + ")");
        }
    }
    std::cout << frames << " frames " << count << " stories " << count * kContainersPerStory << " containers"
              << std::endl;
    std::_Exit(0);
}

struct Row {
    const char* name;
    mach_timebase_info_data_t timebase;
};
class StoriesTest : public testing::TestWithParam<Row> {};

TEST_P(StoriesTest, AgreeWithTheReference) {
    EXPECT_EXIT(agreeOn(GetParam().timebase), testing::ExitedWithCode(0), "");
}
INSTANTIATE_TEST_SUITE_P(Timebases, StoriesTest,
                         testing::Values(Row{"Nanoseconds", {1, 1}}, Row{"Slower", {125, 3}}, Row{"Faster", {3, 125}},
                                         Row{"Broken", {0, 1}}),
                         [](const auto& row) { return row.param.name; });

// Pixels that hosts make for themselves; the recognizer keeps its own in banks.
TEST(PixelStoriesTest, AgreeWithTheReference) {
    Choices choices(kSeed);
    for (int story = 0; story < 200; ++story) {
        VirtualPixel ours(3, 0.5F, "DEF");
        Reference::VirtualPixel theirs(3, 0.5F, "DEF");
        for (int i = 0; i < 30; ++i) {
            ASSERT_EQ(differenceOfPixel(ours, theirs), nullptr) << story << ", " << i;
            const int sum = static_cast<int>(choices.below(1000)) - 300;
            const float threshold = choices.oneIn(4) ? 90.0F : 200.0F;
            const auto pad = static_cast<std::int32_t>(choices.below(kPadCount));
            ours.updatePixelState(sum, threshold, pad);
            theirs.updatePixelState(sum, threshold, pad);
            if (choices.oneIn(5)) {
                ours.resetGlobalStats();
                theirs.resetGlobalStats();
            }
        }
    }
}

[[noreturn]] void agreeOnKnownRecordings() {
    std::uint64_t frames = 0;
    for (const auto& file : std::filesystem::directory_iterator(VELTO_RECORDINGS)) {
        if (file.path().extension() != ".json")
            continue;
        const Comparison comparison = compareContainer(contentOf(file.path()));
        frames += comparison.frames;
        if (!comparison.difference.empty())
            fail(file.path().filename().string() + ": " + comparison.difference);
    }
    std::_Exit(frames > 1000 ? 0 : 1);
}

TEST(KnownRecordingsStoriesTest, AgreeWithTheReference) {
    EXPECT_EXIT(agreeOnKnownRecordings(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace VeltoTouch::Tests
