#include "Pipeline/Reports/FeatureReport.h"
#include "Pipeline/Reports/InputReport.h"

#include <vector>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using FeatureReport::FactoryResetHoldDuration;
using InputReport::FirmwareEvent;
using InputReport::Image;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FieldsAre;

using Bytes = std::vector<std::uint8_t>;

TEST(ReportTest, ARecordNeedsItsReportIDAndItsLength) {
    struct Row {
        const char* name;
        std::size_t length;
        std::uint8_t reportID;
        bool isImage, isFirmwareEvent, isHoldDuration;
    };
    const Row rows[]{
        {"image, one byte short", 72, 0x01, false, false, false},
        {"image", 73, 0x01, true, false, false},
        {"image, long", 512, 0x01, true, false, false},
        {"firmware event, one byte short", 9, 0x02, false, false, false},
        {"firmware event", 10, 0x02, false, true, false},
        {"firmware event, long", 128, 0x02, false, true, false},
        {"hold duration, one byte short", 4, 0x1F, false, false, false},
        {"hold duration", 5, 0x1F, false, false, true},
        {"hold duration, long", 128, 0x1F, false, false, true},
        {"no ID", 128, 0x00, false, false, false},
        {"unknown ID", 128, 0x03, false, false, false},
        {"ID alone", 1, 0x01, false, false, false},
        {"nothing, not to be touched", 0, 0x01, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Bytes report(row.length, 0x5A); // no memory at all for a length of 0
        if (!report.empty())
            report[0] = row.reportID;
        EXPECT_EQ(Image::parse(report.data(), report.size()).has_value(), row.isImage);
        EXPECT_EQ(FirmwareEvent::parse(report.data(), report.size()).has_value(), row.isFirmwareEvent);
        EXPECT_EQ(FactoryResetHoldDuration::parse(report.data(), report.size()).has_value(), row.isHoldDuration);
    }
}

TEST(ReportTest, ImageFieldsStandAtTheirOffsetsAndBytesBehindThemAreIgnored) {
    Bytes report{0x01, 0x04, 0x03, 0x02, 0xF1, 0x08, 0x07, 0x06, 0xF5, 0xA0, 0xA1, 0xA2, 0xA3};
    std::vector<std::uint16_t> raw;
    std::vector<std::int16_t> signals;
    for (std::uint8_t pad = 0; pad < 15; ++pad) {
        report.insert(report.end(), {pad, 0x80});
        raw.push_back(static_cast<std::uint16_t>(32768 + pad));
    }
    for (std::uint8_t pad = 0; pad < 15; ++pad) {
        report.insert(report.end(), {pad, 0xFF});
        signals.push_back(static_cast<std::int16_t>(pad - 256));
    }
    ASSERT_EQ(report.size(), 73U);
    for (const std::size_t length : {73U, 512U}) {
        report.resize(length, 0xEE);
        const auto image = Image::parse(report.data(), report.size());
        ASSERT_TRUE(image);
        EXPECT_THAT(*image, FieldsAre(0xF1020304U, 0xF5060708U, 0xA0, 0xA1, 0xA2, 0xA3, ElementsAreArray(raw),
                                      ElementsAreArray(signals)));
    }
}

TEST(ReportTest, AFirmwareEventShowsItsContextFirstByteMostSignificant) {
    const Bytes report{0x02, 0x99, 0x81, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x88};
    const auto event = FirmwareEvent::parse(report.data(), report.size());
    ASSERT_TRUE(event);
    EXPECT_THAT(*event, FieldsAre(0x99, ElementsAre(0x81, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x88)));
    EXPECT_EQ(event->contextNumber(), 0x8102030405060788U);
}

TEST(ReportTest, TheHoldDurationIsLittleEndian) {
    const Bytes report{0x1F, 0x10, 0x27, 0x00, 0xA0};
    const auto feature = FactoryResetHoldDuration::parse(report.data(), report.size());
    ASSERT_TRUE(feature);
    EXPECT_EQ(feature->holdDuration, 0xA0002710U);
}

} // namespace
} // namespace VeltoTouch::Tests
