#include "Velto/Surface/SurfaceMatch.h"

#include "Platform/JSON.h"
#include "Tests/Support/Program.h"
#include "Velto/Surface/ReportDescriptor.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

// What is taken for a surface, and what the plug-in asks to be loaded for.

namespace VeltoTouch::Surface {
namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes kSurface(kReportDescriptor.begin(), kReportDescriptor.end());

// The surface's descriptor with one row of bytes in it replaced by another.
Bytes with(const Bytes& from, const Bytes& to) {
    const auto at = std::search(kSurface.begin(), kSurface.end(), from.begin(), from.end());
    EXPECT_NE(at, kSurface.end());
    Bytes bytes(kSurface.begin(), at);
    bytes.insert(bytes.end(), to.begin(), to.end());
    bytes.insert(bytes.end(), at + static_cast<std::ptrdiff_t>(from.size()), kSurface.end());
    return bytes;
}

TEST(SurfaceMatchTest, ASurfaceHasItsUsageAndAllItsReports) {
    const Bytes end{0xC0};
    const Bytes image{0x85, 0x01, 0x95, 0x48}, event{0x85, 0x02, 0x95, 0x09}, duration{0x85, 0x1F, 0x95, 0x04};
    const Bytes field{0x85, 0x3F, 0x09, 0x04, 0xB1, 0x02}; // the last feature report
    struct Row {
        const char* name;
        Bytes descriptor;
        bool isSurface;
    };
    const Row rows[]{
        {"itself", kSurface, true},
        {"reports that nobody knows yet", with(end, {0x85, 0x40, 0x95, 0x07, 0x81, 0x02, 0xB1, 0x02, 0x91, 0x02, 0xC0}),
         true},
        {"an output report under an input report's ID", with(end, {0x85, 0x01, 0x91, 0x02, 0xC0}), true},
        {"a second collection", with(end, {0xC0, 0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0xC0}), true},
        {"a collection before it", with({0x06, 0x60}, {0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0xC0, 0x06, 0x60}), false},
        {"another usage of its page", with({0x09, 0x01, 0xA1}, {0x09, 0x02, 0xA1}), false},
        {"its usage of another page", with({0x06, 0x60, 0xFF}, {0x06, 0x61, 0xFF}), false},
        {"a longer image", with(image, {0x85, 0x01, 0x95, 0x49}), false},
        {"an image that goes on", with(end, {0x85, 0x01, 0x95, 0x01, 0x81, 0x02, 0xC0}), false},
        {"an image under another ID", with(image, {0x85, 0x03, 0x95, 0x48}), false},
        {"a shorter firmware event", with(event, {0x85, 0x02, 0x95, 0x08}), false},
        {"a shorter feature report", with(duration, {0x85, 0x1F, 0x95, 0x03}), false},
        {"a feature report is missing", with(field, {}), false},
        {"it is an input report", with(field, {0x85, 0x3F, 0x09, 0x04, 0x81, 0x02}), false},
        {"cut off at its last report", Bytes(kSurface.begin(), kSurface.end() - 3), false},
        {"nothing", {}, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(isSurface(ReportDescriptor(row.descriptor)), row.isSurface) << row.name;
}

TEST(SurfaceMatchTest, ThePlugInIsForThePrimaryUsageOfTheSurface) {
    const Ref<Value> manifest = JSON::parse(Tests::contentOf(VELTO_MANIFEST));
    ASSERT_NE(as<Dictionary>(manifest), nullptr);
    const auto usage = ReportDescriptor(kReportDescriptor).primaryUsage();
    ASSERT_TRUE(usage);
    EXPECT_EQ(JSON::text(as<Dictionary>(manifest)->find("HIDMatching")),
              fmt::format(R"({{"PrimaryUsage":{},"PrimaryUsagePage":{}}})", usage->usage, usage->page));
}

} // namespace
} // namespace VeltoTouch::Surface
