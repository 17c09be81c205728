#include "Plugin/Pipeline/Pipeline.h"
#include "Tests/Support/EventMatchers.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/Simulation.h"
#include "Velto/Surface/Step.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

// The simulated surface: its steps, its clocks, and that the recognizer takes its gestures as they are meant.

namespace VeltoTouch::Surface {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Words = std::vector<std::string>;

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

Simulation simulate(const Words& texts, const Simulation::Options& options = {}) {
    std::vector<Step> steps;
    std::ranges::transform(texts, std::back_inserter(steps), parseStep);
    return {options, scriptOf(steps)};
}

// The recognizer in front of a simulation: one list of events for each contact.
struct Played {
    Simulation::Label label;
    Words events;
};

std::vector<Played> play(Simulation simulation) {
    std::vector<Played> contacts;
    Pipeline pipeline;
    pipeline.hidEventsHandler = [&](std::uint64_t, const HIDEvents& batch) {
        for (const Ref<HIDEvent>& event : batch)
            contacts.back().events.push_back(Tests::gestureTextOf(*event));
    };
    while (const auto report = simulation.next()) {
        if (report->label)
            contacts.push_back({*report->label, {}});
        pipeline.handleInputReport(report->timestampNs, report->bytes().data(), report->length);
    }
    return contacts;
}

// What the recognizer should say to a press.
Words meant(const Simulation::Label& label) {
    const std::string region = fmt::format("({})", label.region);
    if (label.gesture == "tap")
        return {"MayBegin" + region, "Tap" + region};
    if (label.endRegion.empty() || label.endRegion == label.region)
        return {"MayBegin" + region, "HoldStart" + region, "HoldEnd" + region};
    const std::string endRegion = fmt::format("({})", label.endRegion);
    return {"MayBegin" + region, "HoldStart" + region, "HoldChange" + endRegion, "HoldEnd" + endRegion};
}

void expectRecognized(const Played& contact) {
    if (contact.label.region != "None" && contact.label.gesture != "brush") {
        EXPECT_EQ(contact.events, meant(contact.label));
    } else if (!contact.events.empty()) {
        EXPECT_THAT(contact.events, ElementsAre(HasSubstr("MayBegin"), "Cancel()"));
    }
}

TEST(SimulationTest, GesturesAreRecognizedAsMeant) {
    std::istringstream ofRegions(R"(
        tap:play-pause:40 tap:play-pause tap:volume-up tap:volume-down:250
        hold:play-pause hold:volume-up hold:volume-down
        slide:volume-up-volume-down slide:volume-down-volume-up slide:play-pause-volume-up slide:A-D
        palm palm:80 palm:300 brush:play-pause brush:volume-down:60 brush:volume-up:900)");
    Words steps{std::istream_iterator<std::string>(ofRegions), {}};
    for (char pad = 'A'; pad <= 'O'; ++pad) {
        for (const char* action : {"tap:", "hold:", "brush:"})
            steps.push_back(std::string(action) + pad);
    }
    for (const std::string& step : steps) {
        for (std::uint64_t seed = 1; seed <= 20; ++seed) {
            SCOPED_TRACE(step + ", seed " + std::to_string(seed));
            const auto contacts = play(simulate({step}, {.seed = seed}));
            ASSERT_EQ(contacts.size(), 1U);
            expectRecognized(contacts.front());
        }
    }
}

TEST(SimulationTest, AMadeUpUserIsUnderstood) {
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        MadeUpUser user(seed);
        std::vector<Step> steps(100);
        std::ranges::generate(steps, [&user] { return user.next(); });
        const auto contacts = play(Simulation({.seed = seed}, scriptOf(steps)));
        EXPECT_EQ(contacts.size(), 50U);
        for (const Played& contact : contacts) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", contact at " + std::to_string(contact.label.startMs));
            expectRecognized(contact);
        }
    }
}

TEST(SimulationTest, ContactsFollowEachOtherWithTheFingerLiftedBetween) {
    const auto contacts = play(simulate({"tap:A", "tap:A", "hold:A", "tap:A"}));
    ASSERT_EQ(contacts.size(), 4U);
    std::ranges::for_each(contacts, expectRecognized);
}

TEST(SimulationTest, AContactShorterThanAScanIsSeen) {
    Simulation simulation = simulate({"tap:A:1"}, {.rateHz = 20});
    int scansWithContact = 0;
    while (const auto report = simulation.next()) {
        const auto image = InputReport::Image::parse(report->bytes().data(), report->length);
        scansWithContact += image && std::ranges::max(image->padSignal) > 20 ? 1 : 0;
    }
    EXPECT_EQ(scansWithContact, 1);
}

TEST(SimulationTest, ClocksDoNotDriftAtARateThatDividesNoSecond) {
    Simulation simulation = simulate({"idle:3000"}, {.rateHz = 7});
    std::uint32_t scan = 0;
    for (; const auto report = simulation.next(); ++scan) {
        const auto image = InputReport::Image::parse(report->bytes().data(), report->length);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->frameNumber, Simulation::kStartFrame + scan);
        EXPECT_EQ(image->timestampMs, Simulation::kStartTimeMs + scan * 1000 / 7);
        EXPECT_EQ(report->timestampNs, Simulation::kStartTimeNs + scan * std::uint64_t{1'000'000'000} / 7);
    }
    EXPECT_EQ(scan, 21U);
}

TEST(SimulationTest, RefusesOptionsOutOfRange) {
    EXPECT_THROW(simulate({}, {.rateHz = 0}), std::invalid_argument);
    EXPECT_THROW(simulate({}, {.rateHz = 1001}), std::invalid_argument);
    EXPECT_THROW(simulate({}, {.noise = 1001}), std::invalid_argument);
}

} // namespace
} // namespace VeltoTouch::Surface
