#include "Velto/Bench/Observation.h"
#include "Velto/Analysis/Track.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/SimulatedRecording.h"

#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using Bench::Observation;

PipelineRecording madeUpRecording() {
    Surface::Simulation simulation({}, Surface::scriptOf(Surface::scriptFor({"reset", "tap:A", "reset"}, 7, 40)));
    return Surface::recordingOf(simulation);
}

void observe(Observation& observation, const PipelineRecording& recording) {
    for (const Frame& frame : recording.frames())
        observation.add(frame);
}

std::string textOf(const Analysis::Touch& touch) {
    return fmt::format("{} {} {} {} {} {}", touch.number, touch.startNs, touch.endNs, nameOf(touch.outcome),
                       touch.checks.size(), touch.peak.pixel);
}

TEST(ObservationTest, TouchesAreThoseThatTheWholeRecordingHas) {
    const PipelineRecording recording = madeUpRecording();
    std::vector<std::string> expected;
    for (const Analysis::Touch& touch : Analysis::touchesOf(Analysis::Track(recording.frames()), {}))
        expected.push_back(textOf(touch));
    Observation observation(0);
    observe(observation, recording);
    std::vector<std::string> came;
    for (const auto& [moment, touch] : observation.decisions()) {
        came.push_back(textOf(touch));
        EXPECT_EQ(observation.moment(moment).time.count(), touch.endNs);
        EXPECT_FALSE(observation.moment(moment).contact);
        EXPECT_EQ(observation.moment(moment - 1).contact.value().number, touch.number);
    }
    EXPECT_GT(came.size(), 30U);
    EXPECT_EQ(came, expected);
}

// The numbers of the moments go on, and the recording starts from the settings in force.
TEST(ObservationTest, WhatIsKeptIsBounded) {
    constexpr std::uint64_t kBound = 50;
    const PipelineRecording recording = madeUpRecording();
    Observation all(0);
    observe(all, recording);
    Observation observation(kBound);
    observation.add({.type = Frame::Type::State,
                     .timestampNs = 0,
                     .key = "Algs.HoldTimeoutMilliseconds",
                     .value = Number::withUnsignedInt(250),
                     .report = {}});
    observe(observation, recording);
    EXPECT_EQ(observation.end(), all.end());
    EXPECT_EQ(observation.firstKept(), all.end() - 2 * kBound);
    EXPECT_EQ(observation.moment(all.end() - 1).time, all.moment(all.end() - 1).time);
    EXPECT_EQ(observation.moment(observation.firstKept()).holdTimeoutMs, 250U);
    EXPECT_LE(observation.recording().frames().size(), 2 * kBound);
    EXPECT_EQ(observation.recording().frames().front().key, "Algs.HoldTimeoutMilliseconds");
    EXPECT_NEAR(observation.rateHz(all.end() - 1).value(), 100, 1);
}

} // namespace
} // namespace VeltoTouch::Tests
