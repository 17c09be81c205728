#include "Tests/Kernel/VirtualDevice.h"
#include "Tests/Support/Program.h"

#include <csignal>
#include <optional>

#include <fmt/format.h>
#include <sys/stat.h>

namespace VeltoTouch::Tests {
namespace {

// A HID device without any report.
const VirtualDevice::Identity kNoSurface{.reportDescriptor = {0x05, 0x01, 0x09, 0x00, 0xA1, 0x01, 0xC0}};

std::string lineOf(const std::string& kind, const std::string& path) {
    return fmt::format(
        R"({{"kind":"device",{}"node":"{}","product":"Virtual Touch Surface","serialNumber":"K-1","bus":"Virtual"}})"
        "\n",
        kind, path);
}

TEST(DevicesCommandTest, TheSurfacesOfThisMachineAreShown) {
    const std::string none = "no surface is plugged in\n";
    const VirtualDevice stranger(kNoSurface);
    EXPECT_THAT(velto().run({"devices"}), Ends(1, "", "velto: " + none));
    EXPECT_THAT(velto().run({"run", "--device", "surface"}), Ends(1, "", "velto: surface: " + none));
    const VirtualDevice surface;
    EXPECT_THAT(velto().run({"devices"}), Ends(0, fmt::format("{:<14}  {:<32}  {:<16}  {}\n", surface.path(),
                                                              "Virtual Touch Surface", "K-1", "Virtual")));
    EXPECT_THAT(velto().run({"devices", "--jsonl"}), Ends(0, lineOf("", surface.path())));
    EXPECT_THAT(velto().signalledAfterALine(SIGTERM).run({"devices", "--watch", "--jsonl"}),
                Ends(0, lineOf(R"("action":"add",)", surface.path())));
}

TEST(DevicesCommandTest, AWatchShowsWhatComesAndGoesAsItHappens) {
    std::optional<VirtualDevice> surface(std::in_place);
    const std::string path = surface->path();
    const TemporaryFolder folder;
    const std::string pipe = folder.path("output");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::string output;
    std::thread hand([&] {
        std::ifstream lines(pipe);
        int count = 0;
        for (std::string line; std::getline(lines, line); output += line + "\n") {
            ++count;
            if (count == 2)
                surface.emplace();
            else if (count <= 3)
                surface.reset();
        }
    });
    EXPECT_THAT(velto().writingTo(pipe).run({"devices", "--watch", "--duration", "4"}), Ends(0, ""));
    hand.join();
    EXPECT_THAT(output, testing::MatchesRegex("\\+ " + path + " .*Virtual\n- " + path + "\n\\+ " + path + " .*\n" +
                                              "- " + path + "\n"));
}

} // namespace
} // namespace VeltoTouch::Tests
