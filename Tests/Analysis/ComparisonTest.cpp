#include "Velto/Analysis/Comparison.h"

#include <string>

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

struct Row {
    const char* name;
    std::vector<Contact> a;
    std::vector<Contact> b;
    const char* changes;
};

class ComparisonTest : public testing::TestWithParam<Row> {};

const Row kRows[]{
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
    // Its touch is another now, and it is found as before: neither fixed nor broken.
    {"LabelOfAnotherTouch",
     {{0, 90, Tap, PlayPause, ATap}},
     {{0, 60, Cancel}, {70, 90, Tap, PlayPause, ATap}},
     "other tap 1>1, other ->2"},
    // Two labels change by one pair of touches, and each is told.
    {"OtherLabelOfTheSameTouch",
     {{0, 90, Tap, PlayPause, ATap}},
     {{0, 90, Hold, PlayPause, AHold}},
     "broken tap 1>1, fixed hold ->1"},
    {"LabelOfASecondTouchOnly",
     {{0, 20, Cancel}, {30, 90, Cancel}},
     {{0, 90, Hold, PlayPause, AHold}},
     "fixed hold 1>1, other 2>1"},
};

TEST_P(ComparisonTest, JudgesEachLabelOnce) {
    EXPECT_EQ(GetParam().changes, textOf(compare(played(GetParam().a), played(GetParam().b))));
}
INSTANTIATE_TEST_SUITE_P(Plays, ComparisonTest, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace VeltoTouch::Tests
