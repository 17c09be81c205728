#include "Platform/Linux/ReportDescriptor.h"

#include "Velto/Surface/ReportDescriptor.h"

#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Usage = ReportDescriptor::Usage;

constexpr IOHIDReportType kInput = kIOHIDReportTypeInput;
constexpr IOHIDReportType kOutput = kIOHIDReportTypeOutput;
constexpr IOHIDReportType kFeature = kIOHIDReportTypeFeature;

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

TEST(ReportDescriptorTest, TheSurfaceSaysWhatItsReportsAre) {
    const ReportDescriptor surface(Surface::kReportDescriptor);
    EXPECT_EQ(surface.primaryUsage(), (Usage{0xFF60, 1}));
    EXPECT_EQ(surface.reportLength(kInput, 1), 73U);
    EXPECT_EQ(surface.reportLength(kInput, 2), 10U);
    EXPECT_EQ(surface.longestReport(kInput), 73U);
    EXPECT_EQ(surface.reportLength(kFeature, 0x1F), 5U);
    for (const int reportID : {0x04, 0x10, 0x11, 0x12, 0x13, 0x1D, 0x32, 0x3B, 0x3C, 0x3F})
        EXPECT_EQ(surface.reportLength(kFeature, static_cast<std::uint8_t>(reportID)), 128U) << reportID;
    EXPECT_EQ(surface.longestReport(kOutput), 0U);
    EXPECT_EQ(surface.reportLength(kFeature, 1), 0U) << "an input report";
}

TEST(ReportDescriptorTest, UsageAndLengthFollowTheRulesOfItems) {
    const Bytes collection{0xA1, 0x01};
    const Bytes fourBytes{0x75, 0x08, 0x95, 0x04, 0x81, 0x02};
    struct Row {
        const char* name;
        Bytes bytes;
        std::size_t longestInput;
        std::optional<Usage> usage = std::nullopt;
    };
    const Row rows[]{
        {"nothing", {}, 0},
        {"mouse, odd bits",
         {0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0x09, 0x01, 0xA1, 0x00, 0x75, 0x01, 0x95, 0x03, 0x81, 0x02, 0xC0, 0xC0},
         1,
         Usage{1, 2}},
        {"bits of several fields add up before they become bytes",
         {0x75, 0x01, 0x95, 0x03, 0x81, 0x02, 0x95, 0x05, 0x81, 0x01, 0x75, 0x04, 0x95, 0x01, 0x81, 0x02},
         2},
        {"huge fields do not wrap around",
         {0x77, 0xFF, 0xFF, 0xFF, 0xFF, 0x97, 0xFF, 0xFF, 0xFF, 0xFF, 0x81, 0x02, 0x81, 0x02},
         1U << 27U},
        {"the page that holds at the collection", joined({{0x05, 0x01, 0x09, 0x05, 0x06, 0x60, 0xFF}, collection}), 0,
         Usage{0xFF60, 5}},
        {"a long usage has its own page", joined({{0x05, 0x01, 0x0B, 0x02, 0x00, 0x0D, 0x00}, collection}), 0,
         Usage{0x0D, 2}},
        {"the first of several usages", joined({{0x05, 0x01, 0x09, 0x06, 0x09, 0x07}, collection}), 0, Usage{1, 6}},
        {"a usage that a field has used up", joined({{0x05, 0x01, 0x09, 0x06}, fourBytes, collection}), 4},
        {"only the first collection counts", joined({collection, {0x05, 0x01, 0x09, 0x02}, collection}), 0},
        {"the ID is a byte of each report, whenever it comes", joined({fourBytes, {0x85, 0x07}, fourBytes}), 5},
        {"fields of a report need not stand together",
         joined({{0x85, 0x01}, fourBytes, {0x85, 0x02}, fourBytes, {0x85, 0x01}, fourBytes}), 9},
        {"output and feature fields are no input", {0x75, 0x08, 0x95, 0x04, 0x91, 0x02, 0xB1, 0x02}, 0},
        {"pop brings back sizes, ID and page",
         joined({{0x05, 0x01, 0x85, 0x01, 0x75, 0x08, 0x95, 0x02, 0xA4},
                 {0x05, 0x0D, 0x85, 0x02, 0x75, 0x10, 0x95, 0x09, 0xB4},
                 {0x09, 0x02, 0xA1, 0x01, 0x81, 0x02}}),
         3, Usage{1, 2}},
        {"long items are passed over", joined({{0xFE, 0x03, 0x10, 0x81, 0x81, 0x81, 0xFE, 0x00, 0x11}, fourBytes}), 4},
        {"four bytes of data", {0x77, 0x08, 0x00, 0x00, 0x00, 0x97, 0x00, 0x01, 0x00, 0x00, 0x81, 0x02}, 256},
        {"no data is 0", joined({fourBytes, {0x94, 0x81, 0x02}}), 4},
        // What cannot be read ends it, and what came before counts, without a byte for an ID.
        {"cut off before the data", joined({fourBytes, {0x81}}), 4},
        {"cut off in the data", joined({fourBytes, {0x97, 0xFF, 0xFF, 0xFF}}), 4},
        {"a long item that is cut off", joined({fourBytes, {0xFE}}), 4},
        {"a long item without its tag", joined({fourBytes, {0xFE, 0x00}}), 4},
        {"a long item that is longer than the rest", joined({fourBytes, {0xFE, 0xFF, 0x10, 0x81, 0x02, 0x81}}), 4},
        {"pop of nothing", joined({fourBytes, {0xB4, 0xB4}}), 4},
        {"report ID 0", joined({fourBytes, {0x85, 0x00}}), 4},
        {"a report ID above 255", joined({fourBytes, {0x86, 0x01, 0x01}}), 4},
        {"an end without a beginning", joined({fourBytes, {0xC0, 0xC0}}), 4},
        {"reserved tags", joined({fourBytes, {0xD0, 0xF0, 0xC4, 0x0C, 0xFD, 0x01}}), 4},
    };
    for (const Row& row : rows) {
        const ReportDescriptor descriptor(row.bytes);
        EXPECT_EQ(descriptor.primaryUsage(), row.usage) << row.name;
        EXPECT_EQ(descriptor.longestReport(kInput), row.longestInput) << row.name;
    }
}

// Whatever the bytes are, cut off anywhere and with any one of them changed: the sanitizers watch.
TEST(ReportDescriptorTest, DamagedDescriptorsAreRead) {
    const Bytes whole(Surface::kReportDescriptor.begin(), Surface::kReportDescriptor.end());
    std::size_t longest = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            Bytes damaged = whole;
            damaged[at] = static_cast<std::uint8_t>(value);
            longest = std::max(longest, ReportDescriptor(damaged).longestReport(kInput));
        }
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at)); // no byte to read beyond
        EXPECT_LE(ReportDescriptor(cut).longestReport(kInput), 73U) << at;
    }
    EXPECT_GT(longest, 73U) << "some changes make a report longer";
}

} // namespace
} // namespace VeltoTouch::Tests
