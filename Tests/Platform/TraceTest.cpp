#include "Platform/Trace.h"
#include "Platform/Testing/TraceCapture.h"
#include "Tests/Support/Program.h"

#include <algorithm>
#include <thread>

#include <dlfcn.h>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

using Point = TraceCapture::Point;

TEST(TraceTest, ACaptureKeepsThePointsOfItsTimeInOrder) {
    kdebug_trace(3, 0, 0, 0, 0); // before its time
    const TraceCapture capture;
    kdebug_trace(1, 2, 3, 4, 5);
    kdebug_trace(0xFFFFFFFF, ~std::uint64_t{0}, 0, 1, 2);
    EXPECT_THAT(capture.points(), ElementsAre(Point{1, 2, 3, 4, 5}, Point{0xFFFFFFFF, ~std::uint64_t{0}, 0, 1, 2}));
}

TEST(TraceTest, ACaptureKeepsTheNewestPointsOfAllThreads) {
    const TraceCapture capture;
    const auto trace = [](std::uint32_t code, std::uint64_t count) {
        for (std::uint64_t i = 0; i < count; ++i)
            kdebug_trace(code, i, 0, 0, 0);
    };
    std::thread(trace, 1, 5).join();
    {
        const std::jthread one(trace, 2, TraceCapture::kKept / 2);
        const std::jthread other(trace, 3, TraceCapture::kKept / 2 - 3);
    }
    const auto points = capture.points();
    ASSERT_EQ(points.size(), 4096U);
    EXPECT_EQ(points[0], (Point{1, 2, 0, 0, 0}));
    EXPECT_EQ(points[2], (Point{1, 4, 0, 0, 0}));
    EXPECT_EQ(std::ranges::count(points, 2U, &Point::code), 2048);
    EXPECT_EQ(std::ranges::count(points, 3U, &Point::code), 2045);
}

// What perf and bpftrace look for: a note with provider, name and a word for each argument, "-8@%rax".
TEST(TraceTest, TheLibraryHasAProbeForTracingTools) {
    Dl_info library{};
    ASSERT_NE(dladdr(reinterpret_cast<const void*>(&kdebug_trace), &library), 0);
    const std::string content = contentOf(library.dli_fname);
    const std::string name("velto\0kdebug_trace\0", 19);
    const std::size_t note = content.find(name);
    ASSERT_NE(note, std::string::npos) << library.dli_fname;
    EXPECT_NE(content.find("stapsdt"), std::string::npos);
    const std::string arguments = content.c_str() + note + name.size();
    EXPECT_EQ(std::ranges::count(arguments, '@'), 5) << arguments;
}

} // namespace
} // namespace VeltoTouch::Tests
