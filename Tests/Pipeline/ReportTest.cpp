#include "Pipeline/Reports/FeatureReport.h"
#include "Pipeline/Reports/InputReport.h"

#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

using FeatureReport::FactoryResetHoldDuration;
using InputReport::FirmwareEvent;
using InputReport::Image;

using Bytes = std::vector<std::uint8_t>;

// The records that a report of this ID and length holds.
std::string recordsIn(std::uint8_t reportID, std::size_t length) {
    const Bytes report(length, reportID); // no memory at all for a length of 0
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
    Bytes report(512);
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
    const Bytes eventReport{0x02, 0x99, 0x81, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x88};
    const auto event = FirmwareEvent::parse(eventReport.data(), eventReport.size());
    ASSERT_TRUE(event);
    EXPECT_EQ(event->event, 0x99);
    EXPECT_EQ(event->contextNumber(), 0x8102030405060788U);

    const Bytes featureReport{0x1F, 0x10, 0x27, 0x00, 0xA0};
    const auto feature = FactoryResetHoldDuration::parse(featureReport.data(), featureReport.size());
    ASSERT_TRUE(feature);
    EXPECT_EQ(feature->holdDuration, 0xA0002710U);
}

} // namespace
} // namespace VeltoTouch::Tests
