#include "Platform/JSON.h"
#include "Plugin/Reports/FeatureReport.h"
#include "Tests/Support/TouchFixture.h"

#include <numeric>

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
    EXPECT_THAT(callsFor(5, 0), ElementsAre("5: report of 73", "5: image 0", "5: gap 1 to 0")) << "still tracked";
    EXPECT_EQ(JSON::text(pipeline.getState("DebugInfo").get()), R"({"DisjointImageCount":1,"ResetCount":2})");
}

TEST_F(PipelineTest, ReportsOfNoKnownKindAreInvalid) {
    Report report = imageReport(makeImage(1, 10, {{'N', 300}}));
    report.pop_back();
    EXPECT_THAT(callsFor(1, report), ElementsAre("1: report of 72", "1: invalid report of 72"));
    EXPECT_THAT(callsFor(2, Report{}), ElementsAre("2: report of 0", "2: invalid report of 0"));
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

TEST_F(PipelineTest, KeysOfTheRecognizerReachItOtherKeysAndMetadataTheirObserversAlone) {
    const std::string timeout = "Algs.HoldTimeoutMilliseconds";
    for (const std::string& key :
         {timeout, std::string("HoldTimeoutMilliseconds"), "a" + timeout.substr(1), std::string("debuginfo")}) {
        calls.clear();
        pipeline.setState(5, key, Number::withUnsignedInt(250));
        EXPECT_EQ(pipeline.getState(key) != nullptr, key == timeout) << key;
        pipeline.handleMetadata(6, key, Number::withUnsignedInt(251));
        EXPECT_THAT(calls, ElementsAre("5: setState " + key, "getState " + key, "6: metadata " + key));
        EXPECT_EQ(pipeline.algs.handStats.holdTimeoutMs, 250U);
    }
    pipeline.setStateObserver = [this](auto, const auto&, const auto&) {
        EXPECT_EQ(pipeline.algs.handStats.holdTimeoutMs, 250U) << "told before it acts";
    };
    pipeline.setState(7, timeout, Number::withUnsignedInt(300));
    EXPECT_EQ(pipeline.algs.handStats.holdTimeoutMs, 300U);
}

using FeatureReport::FactoryResetHoldDuration;
using InputReport::FirmwareEvent;
using InputReport::Image;

// The records that a report of this ID and length holds.
std::string recordsIn(std::uint8_t reportID, std::size_t length) {
    const Report report(length, reportID); // no memory at all for a length of 0
    std::string records;
    records += Image::parse(report.data(), length) ? "image" : "";
    records += FirmwareEvent::parse(report.data(), length) ? "firmware event" : "";
    records += FactoryResetHoldDuration::parse(report.data(), length) ? "hold duration" : "";
    return records;
}

TEST(ReportTest, ARecordNeedsItsReportIDAndItsLength) {
    EXPECT_EQ(recordsIn(0x01, 72), "");
    EXPECT_EQ(recordsIn(0x01, 73), "image");
    EXPECT_EQ(recordsIn(0x02, 9), "");
    EXPECT_EQ(recordsIn(0x02, 10), "firmware event");
    EXPECT_EQ(recordsIn(0x02, 128), "firmware event");
    EXPECT_EQ(recordsIn(0x1F, 4), "");
    EXPECT_EQ(recordsIn(0x1F, 5), "hold duration");
    EXPECT_EQ(recordsIn(0x03, 128), "");
    EXPECT_EQ(recordsIn(0x01, 0), "");
}

TEST(ReportTest, ImageFieldsAreLittleEndianAtTheirOffsetsAndBytesBehindThemAreIgnored) {
    Report report(512);
    std::iota(report.begin(), report.end(), Image::kReportID); // each byte is one more than its offset
    report[72] = 0xFF;
    const auto image = Image::parse(report.data(), report.size());
    ASSERT_TRUE(image);
    EXPECT_EQ(image->frameNumber, 0x05040302U);
    EXPECT_EQ(image->timestampMs, 0x09080706U);
    EXPECT_EQ(image->reserved3, 0x0D);
    EXPECT_EQ(image->padRaw.front(), 0x0F0E);
    EXPECT_EQ(image->padRaw.back(), 0x2B2A);
    EXPECT_EQ(image->padSignal.front(), 0x2D2C);
    EXPECT_EQ(image->padSignal.back(), -184); // 0xFF48
}

TEST(ReportTest, AnEventsContextShowsItsFirstByteMostSignificantAndAHoldDurationItsLast) {
    const Report eventReport{0x02, 0x99, 0x81, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x88};
    const auto event = FirmwareEvent::parse(eventReport.data(), eventReport.size());
    ASSERT_TRUE(event);
    EXPECT_EQ(event->event, 0x99);
    EXPECT_EQ(event->contextNumber(), 0x8102030405060788U);

    const Report featureReport{0x1F, 0x10, 0x27, 0x00, 0xA0};
    const auto feature = FactoryResetHoldDuration::parse(featureReport.data(), featureReport.size());
    ASSERT_TRUE(feature);
    EXPECT_EQ(feature->holdDuration, 0xA0002710U);
}

} // namespace
} // namespace VeltoTouch::Tests
