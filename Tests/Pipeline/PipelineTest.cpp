#include "Platform/JSON.h"
#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

// A pipeline whose callbacks note that they were called, when and with what.
class PipelineTest : public ::testing::Test {
protected:
    void SetUp() override {
        pipeline.inputReportObserver = [this](auto time, const auto*, std::size_t length) {
            calls.push_back(fmt::format("{}: report of {}", time, length));
        };
        pipeline.invalidReportHandler = [this](auto time, const auto*, std::size_t length) {
            calls.push_back(fmt::format("{}: invalid report of {}", time, length));
        };
        pipeline.firmwareEventHandler = [this](auto time, const auto& event) {
            calls.push_back(fmt::format("{}: firmware event {}", time, event.event));
        };
        pipeline.imageHandler = [this](auto time, const auto& image) {
            calls.push_back(fmt::format("{}: image {}", time, image.frameNumber));
        };
        pipeline.disjointImageHandler = [this](auto time, std::uint32_t previous, const auto& image) {
            calls.push_back(fmt::format("{}: gap {} to {}", time, previous, image.frameNumber));
        };
        pipeline.hidEventsHandler = [this](auto time, const HIDEvents& events) {
            calls.push_back(fmt::format("{}: events", time));
            for (const auto& event : events)
                calls.back() += ' ' + gestureTextOf(*event);
        };
    }

    // The calls that a report gives.
    std::vector<std::string> callsFor(std::uint64_t timestamp, const Report& report) {
        calls.clear();
        pipeline.handleInputReport(timestamp, report.data(), report.size());
        return calls;
    }
    std::vector<std::string> callsFor(std::uint64_t timestamp, std::uint32_t frame, PadSignals signals = {}) {
        return callsFor(timestamp, imageReport(makeImage(frame, frame * 10, signals)));
    }

    Pipeline pipeline;
    std::vector<std::string> calls;
};

TEST_F(PipelineTest, ReportPassesTheHandlersOfItsKindInOrder) {
    EXPECT_THAT(callsFor(6, 0xFFFFFFFF), ElementsAre("6: report of 73", "6: image 4294967295"));
    EXPECT_THAT(callsFor(7, 0), ElementsAre("7: report of 73", "7: image 0")) << "frame numbers wrap";
    EXPECT_THAT(callsFor(8, 1, {{'N', 300}}),
                ElementsAre("8: report of 73", "8: image 1", "8: events MayBegin(VolumeDown)"));
    EXPECT_THAT(callsFor(9, 3),
                ElementsAre("9: report of 73", "9: image 3", "9: gap 1 to 3", StartsWith("9: events ")));
    EXPECT_THAT(callsFor(10, {1, 2}), ElementsAre("10: report of 2", "10: invalid report of 2"));
    EXPECT_THAT(callsFor(11, firmwareEventReport(3)), ElementsAre("11: report of 10", "11: firmware event 3"));
}

TEST_F(PipelineTest, FirmwareResetCancelsATouchAndEndsWithItsOwnEvent) {
    static_cast<void>(callsFor(1, 1, {{'N', 300}}));
    EXPECT_THAT(callsFor(2, firmwareEventReport(0)),
                ElementsAre("2: report of 10", "2: firmware event 0", "2: events Cancel() FirmwareReset()"));
    EXPECT_THAT(callsFor(3, 0), ElementsAre("3: report of 73", "3: image 0", "3: gap 1 to 0")) << "still tracked";
    EXPECT_EQ(JSON::text(pipeline.getState("DebugInfo").get()), R"({"DisjointImageCount":1,"ResetCount":1})");
}

TEST_F(PipelineTest, OnlyTheRecognizersKeysReachItAfterTheObserver) {
    std::uint32_t timeoutWhenObserved = 0;
    pipeline.setStateObserver = [&](auto, const auto&, const auto&) {
        timeoutWhenObserved = pipeline.algs.handStats.holdTimeoutMs;
    };
    for (const char* key : {"HoldTimeoutMilliseconds", "algs.HoldTimeoutMilliseconds", "Algs-HoldTimeoutMilliseconds",
                            "Algs.HoldTimeoutMilliseconds"})
        pipeline.setState(5, key, Number::withUnsignedInt(250));
    EXPECT_EQ(timeoutWhenObserved, 500U);
    EXPECT_EQ(pipeline.algs.handStats.holdTimeoutMs, 250U);
}

} // namespace
} // namespace VeltoTouch::Tests
