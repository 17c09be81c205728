#include "Platform/JSON.h"
#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

// A pipeline whose every callback notes that it was called, when and with what.
class PipelineTest : public ::testing::Test {
protected:
    void SetUp() override {
        pipeline.setStateObserver = [this](auto time, const auto& key, const auto&) { note(time, "setState " + key); };
        pipeline.inputReportObserver = [this](auto time, const auto*, std::size_t length) {
            note(time, fmt::format("report of {}", length));
        };
        pipeline.metadataHandler = [this](auto time, const auto& key, const auto&) { note(time, "metadata " + key); };
        pipeline.invalidReportHandler = [this](auto time, const auto*, std::size_t length) {
            note(time, fmt::format("invalid report of {}", length));
        };
        pipeline.firmwareEventHandler = [this](auto time, const auto& event) {
            note(time, fmt::format("firmware event {}", event.event));
        };
        pipeline.imageHandler = [this](auto time, const auto& image) {
            note(time, fmt::format("image {}", image.frameNumber));
        };
        pipeline.disjointImageHandler = [this](auto time, std::uint32_t previous, const auto& image) {
            note(time, fmt::format("gap {} to {}", previous, image.frameNumber));
        };
        pipeline.hidEventsHandler = [this](auto time, const HIDEvents& events) {
            note(time, "events");
            for (const auto& event : events) {
                EXPECT_EQ(IOHIDEventGetTimeStamp(event.get()), time) << testing::PrintToString(event);
                calls.back() += ' ' + gestureOf(*event);
            }
        };
        pipeline.getStateObserver = [this](const auto& key) { calls.push_back("getState " + key); };
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
    void note(std::uint64_t time, const std::string& call) { calls.push_back(fmt::format("{}: {}", time, call)); }

    Pipeline pipeline;
    std::vector<std::string> calls;
};

TEST_F(PipelineTest, ImagePassesItsHandlersInOrder) {
    EXPECT_THAT(callsFor(7, 5), ElementsAre("7: report of 73", "7: image 5"));
    EXPECT_THAT(callsFor(8, 6, {{'N', 300}}),
                ElementsAre("8: report of 73", "8: image 6", "8: events MayBegin(VolumeDown)"));
    EXPECT_THAT(callsFor(9, 8),
                ElementsAre("9: report of 73", "9: image 8", "9: gap 6 to 8", testing::StartsWith("9: events ")));
}

TEST_F(PipelineTest, FirmwareResetEndsWithItsOwnEventAndOtherFirmwareEventsAreOnlyToldOf) {
    EXPECT_THAT(callsFor(1, firmwareEventReport(0)),
                ElementsAre("1: report of 10", "1: firmware event 0", "1: events FirmwareReset()"));
    static_cast<void>(callsFor(2, 1, {{'N', 300}}));
    EXPECT_THAT(callsFor(3, firmwareEventReport(0)),
                ElementsAre("3: report of 10", "3: firmware event 0", "3: events Cancel() FirmwareReset()"));
    EXPECT_THAT(callsFor(4, firmwareEventReport(3)), ElementsAre("4: report of 10", "4: firmware event 3"));
    EXPECT_EQ(pipeline.resetCount, 2U);
}

TEST_F(PipelineTest, ReportsOfNoKnownKindAreInvalid) {
    EXPECT_THAT(callsFor(1, Report{}), ElementsAre("1: report of 0", "1: invalid report of 0"));
    Report report = imageReport(makeImage(1, 10, {{'N', 300}}));
    report[0] = 3;
    EXPECT_THAT(callsFor(2, report), ElementsAre("2: report of 73", "2: invalid report of 73"));
    report[0] = InputReport::Image::kReportID;
    report.pop_back();
    EXPECT_THAT(callsFor(3, report), ElementsAre("3: report of 72", "3: invalid report of 72"));
    EXPECT_FALSE(pipeline.hasLastFrame);
}

TEST_F(PipelineTest, GapsInTheFrameNumbersAreCounted) {
    const std::pair<std::vector<std::uint32_t>, std::uint32_t> rows[]{
        {{4711}, 0},          {{5, 6, 8, 9}, 1}, {{7, 7, 8}, 1}, {{7, 6, 7}, 1}, {{0xFFFFFFFE, 0xFFFFFFFF, 0, 1}, 0},
        {{0xFFFFFFFF, 1}, 1},
    };
    for (const auto& [frames, gaps] : rows) {
        Pipeline bare; // no callback is needed
        for (const std::uint32_t frame : frames) {
            const Report report = imageReport(makeImage(frame, 0, {}));
            bare.handleInputReport(0, report.data(), report.size());
        }
        EXPECT_EQ(bare.disjointImageCount, gaps) << testing::PrintToString(frames);
    }
}

TEST_F(PipelineTest, ResetKeepsTheFrameTracking) {
    static_cast<void>(callsFor(1, 41));
    static_cast<void>(callsFor(2, firmwareEventReport(0)));
    EXPECT_THAT(callsFor(3, 0), ElementsAre("3: report of 73", "3: image 0", "3: gap 41 to 0"));
    EXPECT_EQ(JSON::text(pipeline.getState("DebugInfo").get()), R"({"DisjointImageCount":1,"ResetCount":1})");
}

TEST_F(PipelineTest, KeysOfTheRecognizerReachIt) {
    const std::string key = "Algs.HoldTimeoutMilliseconds";
    pipeline.setState(5, key, Number::withUnsignedInt(250));
    EXPECT_EQ(as<Number>(pipeline.getState(key))->unsignedLongLongValue(), 250U);
    EXPECT_THAT(calls, ElementsAre("5: setState " + key, "getState " + key));
    pipeline.setStateObserver = [this](auto, const auto&, const auto&) {
        EXPECT_EQ(pipeline.algs.handStats.holdTimeoutMs, 250U) << "told before it acts";
    };
    pipeline.setState(6, key, Number::withUnsignedInt(300));
    EXPECT_EQ(pipeline.algs.handStats.holdTimeoutMs, 300U);
}

TEST_F(PipelineTest, OtherKeysAndMetadataReachTheirObserversAlone) {
    for (const std::string key :
         {"HoldTimeoutMilliseconds", "algs.HoldTimeoutMilliseconds", "AlgsHoldTimeoutMilliseconds", "debuginfo"}) {
        calls.clear();
        pipeline.setState(5, key, Number::withUnsignedInt(250));
        EXPECT_FALSE(pipeline.getState(key)) << key;
        EXPECT_THAT(calls, ElementsAre("5: setState " + key, "getState " + key));
    }
    calls.clear();
    pipeline.handleMetadata(6, "Algs.HoldTimeoutMilliseconds", nullptr);
    EXPECT_THAT(calls, ElementsAre("6: metadata Algs.HoldTimeoutMilliseconds"));
    EXPECT_EQ(pipeline.algs.handStats.holdTimeoutMs, 500U);
}

} // namespace
} // namespace VeltoTouch::Tests
