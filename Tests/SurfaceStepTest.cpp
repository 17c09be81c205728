#include "Surface/Step.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace VeltoTouch::Surface {
namespace {

using ::testing::HasSubstr;

TEST(StepTest, AreReadWithPlacesAndDurations) {
    constexpr std::size_t kPadA = 0, kPadI = 8, kPadK = 10, kPadM = 12; // the last three are the regions' middles
    const std::vector<std::pair<std::string, Step>> cases{
        {"tap:A", {.action = Action::Tap, .durationMs = 100, .pad = kPadA, .endPad = kPadA}},
        {"hold:volume-up:3600000", {.action = Action::Hold, .durationMs = 3'600'000, .pad = kPadI, .endPad = kPadI}},
        {"slide:volume-up-volume-down", {.action = Action::Slide, .durationMs = 1200, .pad = kPadI, .endPad = kPadM}},
        {"slide:play-pause-A:50", {.action = Action::Slide, .durationMs = 50, .pad = kPadK, .endPad = kPadA}},
        {"palm", {.action = Action::Palm, .durationMs = 1000}},
        {"idle:20", {.action = Action::Idle, .durationMs = 20}},
        {"reset", {.action = Action::Reset}},
    };
    for (const auto& [text, step] : cases)
        EXPECT_EQ(parseStep(text), step) << text;
}

TEST(StepTest, ThatCannotBeReadAreRefusedInWords) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "no such step"},
        {"Tap:A", "no such step"},
        {"tap", "needs a place"},
        {"tap:P", "no place \"P\""},
        {"slide:volume-up", "\"volume-up\" is not two places"},
        {"slide:A-B-C", "\"A-B-C\" is not two places"},
        {"tap:A:", "\"\" is no duration"},
        {"tap:A:0", "\"0\" is no duration"},
        {"idle:3600001", "\"3600001\" is no duration"},
        {"idle:4294967297", "\"4294967297\" is no duration"},
        {"palm:A", "\"A\" is no duration"},
        {"tap:A:5:5", "\":5\" is too much"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            (void)parseStep(text);
            ADD_FAILURE() << text << " was read";
        } catch (const std::invalid_argument& error) {
            EXPECT_THAT(error.what(), HasSubstr(fmt::format("step \"{}\": {}", text, reason)));
        }
    }
}

} // namespace
} // namespace VeltoTouch::Surface
