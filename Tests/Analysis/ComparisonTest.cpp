#include "Velto/Analysis/Comparison.h"
#include "Velto/Analysis/Score.h"

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

using namespace Analysis;
using enum Outcome;
using enum PixelRegion;

// What was meant by a touch; labels of the table, by index.
enum Meant : std::size_t { Nothing, ATap, AHold, APalm };

Label labelOf(Meant meant) {
    constexpr std::array<const char*, 4> kGestures{"", "tap", "hold", "palm"};
    return {.index = meant,
            .gesture = kGestures[meant],
            .region = std::string(nameOf(meant == APalm ? None : PlayPause)),
            .endRegion = ""};
}

struct Contact {
    std::uint64_t startNs;
    std::uint64_t endNs;
    Outcome outcome;
    PixelRegion region = PlayPause;
    Meant meant = Nothing;
    PixelRegion heldTo = region; // of a hold
};

LabelledTouches played(const std::vector<Contact>& contacts) {
    LabelledTouches play;
    for (const Contact& contact : contacts) {
        Touch touch{.number = play.touches.size() + 1,
                    .startNs = contact.startNs,
                    .endNs = contact.endNs,
                    .outcome = contact.outcome,
                    .region = contact.region};
        if (contact.outcome == Hold)
            touch.events = {{.kind = GestureKind::HoldStart, .region = contact.region},
                            {.kind = GestureKind::HoldEnd, .region = contact.heldTo}};
        play.touches.push_back(touch);
        play.labels.push_back(contact.meant == Nothing ? std::nullopt : std::optional(labelOf(contact.meant)));
        play.isLabelled |= contact.meant != Nothing;
    }
    return play;
}

// "broken tap 1>2, other ->3": change, label, numbers of the touches.
std::string textOf(const std::vector<ComparedTouch>& touches) {
    const auto number = [](const Touch* touch) { return touch == nullptr ? "-" : std::to_string(touch->number); };
    std::string text;
    for (const ComparedTouch& touch : touches)
        text += fmt::format("{}{} {}{}>{}", text.empty() ? "" : ", ", nameOf(touch.change),
                            touch.label == nullptr ? "" : touch.label->gesture + " ", number(touch.a), number(touch.b));
    return text;
}

struct ComparisonRow {
    const char* name;
    std::vector<Contact> a;
    std::vector<Contact> b;
    const char* changes;
};

class ComparisonTest : public testing::TestWithParam<ComparisonRow> {};

const ComparisonRow kComparisonRows[]{
    {"Fixed", {{0, 9, Cancel, PlayPause, ATap}}, {{0, 9, Tap, PlayPause, ATap}}, "fixed tap 1>1"},
    {"Broken", {{0, 9, Tap, PlayPause, ATap}}, {{0, 9, Cancel, PlayPause, ATap}}, "broken tap 1>1"},
    {"WrongBothTimes", {{0, 9, Cancel, PlayPause, ATap}}, {{0, 9, Hold, PlayPause, ATap}}, "other tap 1>1"},
    {"FoundInTheWrongRegion", {{0, 9, Tap, PlayPause, ATap}}, {{0, 9, Tap, VolumeUp, ATap}}, "broken tap 1>1"},
    {"HoldThatLeavesItsRegion",
     {{0, 9, Hold, PlayPause, AHold}},
     {{0, 9, Hold, PlayPause, AHold, VolumeUp}},
     "broken hold 1>1"},
    {"PalmThatGivesATap", {{0, 9, Cancel, PlayPause, APalm}}, {{0, 9, Tap, PlayPause, APalm}}, "broken palm 1>1"},
    {"PalmThatTouchesNoMore", {{0, 9, Tap, PlayPause, APalm}}, {}, "fixed palm 1>-"},
    {"TouchThatIsNew", {}, {{0, 9, Tap, PlayPause, ATap}}, "fixed tap ->1"},
    {"NotLabelled", {{0, 9, Tap}, {20, 29, Tap}}, {{0, 9, Tap}, {20, 29, Tap, VolumeUp}}, "same 1>1, other 2>2"},
    {"SplitInTwo", {{0, 90, Hold}}, {{0, 20, Tap}, {30, 90, Hold}}, "same 1>2, other ->1"},
    {"JoinedToOne",
     {{0, 20, Cancel}, {30, 90, Tap, PlayPause, ATap}},
     {{0, 90, Hold, PlayPause, ATap}},
     "other 1>1, broken tap 2>1"},
    {"LabelOfAnotherTouch",
     {{0, 90, Tap, PlayPause, ATap}},
     {{0, 60, Cancel}, {70, 90, Tap, PlayPause, ATap}},
     "same tap 1>2, other ->1"},
    {"OtherLabelOfTheSameTouch",
     {{0, 90, Tap, PlayPause, ATap}},
     {{0, 90, Hold, PlayPause, AHold}},
     "broken tap 1>-, fixed hold ->1"},
    {"LabelOfASecondTouchOnly",
     {{0, 20, Cancel}, {30, 90, Cancel}},
     {{0, 90, Hold, PlayPause, AHold}},
     "other 1>1, fixed hold ->1, other 2>1"},
    {"StraysThatComeAndGo",
     {{0, 9, Tap, PlayPause, ATap}, {20, 29, Tap}, {40, 49, Cancel}, {60, 69, Tap}},
     {{0, 9, Tap, PlayPause, ATap}, {20, 29, Cancel}, {40, 49, Hold}, {60, 69, Tap, VolumeUp}, {80, 89, Tap}},
     "same tap 1>1, fixed 2>2, broken 3>3, other 4>4, broken ->5"},
    {"StrayThatIsMeantNow", {{0, 9, Tap}}, {{0, 9, Tap, PlayPause, ATap}}, "fixed 1>1, fixed tap ->1"},
};

TEST_P(ComparisonTest, JudgesEachLabelOnce) {
    EXPECT_EQ(GetParam().changes, textOf(compare(played(GetParam().a), played(GetParam().b))));
}
INSTANTIATE_TEST_SUITE_P(Plays, ComparisonTest, testing::ValuesIn(kComparisonRows),
                         [](const auto& row) { return row.param.name; });

// Labels that are not right and strays. Labels are those that either play has.
std::int64_t costOf(const LabelledTouches& play, const LabelledTouches& other) {
    std::map<std::size_t, bool> isRightByLabel;
    std::int64_t strays = 0;
    for (const auto& label : other.labels)
        if (label)
            isRightByLabel[label->index] = isRight(resultOf(*label, nullptr));
    for (std::size_t i = 0; i < play.touches.size(); ++i) {
        const Touch& touch = play.touches[i];
        if (const auto& label = play.labels[i])
            isRightByLabel[label->index] = isRight(resultOf(*label, &touch));
        else
            strays += touch.outcome == Tap || touch.outcome == Hold ? 1 : 0;
    }
    return strays + std::ranges::count(isRightByLabel, false, &std::pair<const std::size_t, bool>::second);
}

TEST(ComparisonOfRandomPlaysTest, FixedLessBrokenIsWhatTheCostFell) {
    std::mt19937 random(1);
    const auto below = [&random](std::uint64_t limit) { return std::uint64_t{random()} % limit; };
    const auto play = [&below] {
        std::vector<Contact> contacts;
        std::vector<Meant> meanings{ATap, AHold, APalm};
        for (std::uint64_t at = below(30); at < 120; at += below(30)) {
            const std::uint64_t end = at + below(40);
            Meant meant = Nothing;
            if (!meanings.empty() && below(2) == 0) {
                meant = meanings.back();
                meanings.pop_back();
            }
            contacts.push_back({at, end, Outcome(below(4)), below(2) == 0 ? PlayPause : VolumeUp, meant});
            at = end + 1;
        }
        return played(contacts);
    };
    for (int i = 0; i < 3000; ++i) {
        LabelledTouches a = play();
        LabelledTouches b = play();
        a.isLabelled = b.isLabelled = true;
        std::int64_t gain = 0;
        for (const ComparedTouch& touch : compare(a, b))
            gain += touch.change == Change::Fixed ? 1 : touch.change == Change::Broken ? -1 : 0;
        ASSERT_EQ(costOf(a, b) - costOf(b, a), gain) << "play " << i;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
