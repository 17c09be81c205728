#include "Velto/Analysis/Pairing.h"

#include <string>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

using namespace Analysis;

struct Span {
    std::uint64_t startMs;
    std::uint64_t endMs;
    const char* gesture = "tap"; // of a label
};

template <class Spanned>
std::vector<Spanned> made(const std::vector<Span>& spans) {
    std::vector<Spanned> all(spans.size());
    for (std::size_t i = 0; i < spans.size(); ++i) {
        all[i].startNs = spans[i].startMs * 1'000'000;
        all[i].endNs = spans[i].endMs * 1'000'000;
        if constexpr (std::is_same_v<Spanned, Touch>)
            all[i].number = i + 1;
        else
            all[i].gesture = spans[i].gesture;
    }
    return all;
}

struct PairingRow {
    const char* name;
    std::vector<Span> labels;
    std::vector<Span> touches;
    const char* touchesByLabel; // numbers; - for none
};

class PairingTest : public testing::TestWithParam<PairingRow> {};

const PairingRow kPairingRows[]{
    {"TouchesTheWindowBefore", {{100, 200}}, {{0, 50}}, "1"},
    {"EndsBeforeTheWindow", {{100, 200}}, {{0, 49}}, "-"},
    {"TouchesTheWindowBehind", {{100, 200}}, {{350, 400}}, "1"},
    {"BeginsBehindTheWindow", {{100, 200}}, {{351, 400}}, "-"},
    {"WindowAtTheStart", {{10, 20}}, {{0, 0}}, "1"},
    {"LargestOverlap", {{100, 200}}, {{0, 110}, {120, 220}, {230, 260}}, "2"},
    {"EqualOverlapsOfALabel", {{1000, 1000}}, {{950, 1000}, {1010, 1060}}, "1"},
    {"EqualOverlapsOfATouch", {{1000, 1010}, {1020, 1030}}, {{1000, 1100}}, "1 -"},
    {"LargestOfAllFirst", {{100, 200}, {210, 400}}, {{160, 420}}, "- 1"},
    {"SecondBestIsLeft", {{100, 200}, {300, 400}}, {{210, 340}, {341, 420}}, "1 2"},
    {"LongTouchBeforeShortOnes", {{100, 110}, {900, 910}}, {{0, 2000}, {890, 920}}, "1 2"},
    {"NoTouch", {{100, 200}}, {}, "-"},
    {"SpoiledTimeIsNotWidened", {{100, 200, "spoiled"}, {300, 400}}, {{200, 201}, {250, 260}}, "1 2"},
    {"GivesWayAndMovesOn", {{0, 1000}, {100, 2000}}, {{0, 400}, {500, 1400}}, "1 2"},
};

TEST_P(PairingTest, PairsOneToOne) {
    const auto touches = made<Touch>(GetParam().touches);
    std::string text;
    for (const Touch* touch : pair(made<Label>(GetParam().labels), touches))
        text += (text.empty() ? "" : " ") + (touch == nullptr ? "-" : std::to_string(touch->number));
    EXPECT_EQ(GetParam().touchesByLabel, text);
}
INSTANTIATE_TEST_SUITE_P(Windows, PairingTest, testing::ValuesIn(kPairingRows),
                         [](const auto& row) { return row.param.name; });

// Windows of weeks: each label could have every touch.
TEST(PairingOfMany, GivesEachLabelTheLongestThatIsLeft) {
    std::vector<Span> spans(600, Span{0, 4'233'600'000});
    const auto labels = made<Label>(spans);
    for (std::size_t i = 0; i < spans.size(); ++i)
        spans[i] = {1000 * i, 1000 * i + 100 + i}; // the later the longer
    const auto touches = made<Touch>(spans);
    const auto paired = pair(labels, touches);
    for (std::size_t i = 0; i < spans.size(); ++i)
        ASSERT_EQ(600 - i, paired[i]->number);
}

} // namespace
} // namespace VeltoTouch::Tests
