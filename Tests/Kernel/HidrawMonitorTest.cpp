#include "Platform/Linux/HidrawMonitor.h"

#include "Tests/Kernel/VirtualDevice.h"
#include "Velto/Surface/SurfaceMatch.h"

#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr int kPatienceMs = 20'000;

// Has the surface's usage, and a report of its own.
const VirtualDevice::Identity kStranger{
    .product = "No Surface",
    .reportDescriptor = {0x06, 0x60, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x15, 0x00, 0x26, 0xFF, 0x00, //
                         0x75, 0x08, 0x95, 0x08, 0x09, 0x01, 0x81, 0x02, 0xC0},
};

// What a monitor has told: "+" or "-", and the node.
class HidrawMonitorTest : public testing::Test {
protected:
    std::vector<std::string> told;

    // Listens until there is no news left, at first until so many were told in all.
    void hear(HidrawMonitor& monitor, std::size_t count) {
        const auto note = [this](const char* sign) {
            return [this, sign](const HidrawNode& node) { told.push_back(sign + node.path); };
        };
        pollfd news{.fd = monitor.descriptor(), .events = POLLIN, .revents = 0};
        while (::poll(&news, 1, told.size() < count ? kPatienceMs : 0) == 1)
            monitor.readChanges(note("+"), note("-"));
    }
};

TEST_F(HidrawMonitorTest, SurfacesAreFoundWithoutTheRightToOpenThem) {
    EXPECT_THAT(findHidrawNodes(Surface::isSurface), IsEmpty());
    const VirtualDevice first, stranger(kStranger), second({.product = "", .serialNumber = "", .bus = 0x05});
    for (const VirtualDevice* device : {&first, &second})
        ASSERT_EQ(::chmod(device->path().c_str(), 0), 0);
    ASSERT_EQ(::seteuid(65534), 0);
    const std::vector<HidrawNode> nodes = findHidrawNodes(Surface::isSurface);
    ASSERT_EQ(::seteuid(0), 0);
    ASSERT_THAT(nodes, SizeIs(2));
    const auto textOf = [](const HidrawNode& node) {
        return fmt::format("{} \"{}\" \"{}\" {}", node.path, node.product, node.serialNumber, node.bus);
    };
    EXPECT_EQ(textOf(nodes[0]), first.path() + R"( "Virtual Touch Surface" "K-1" Virtual)");
    EXPECT_EQ(textOf(nodes[1]), second.path() + R"( "" "" Bluetooth)");
    EXPECT_THAT(nodes[0].folder, StartsWith("/sys/devices/"));
}

TEST_F(HidrawMonitorTest, WhatComesAndGoesIsToldOnceFromTheFirstLookOn) {
    std::optional<VirtualDevice> first(std::in_place);
    const std::string firstPath = first->path();
    HidrawMonitor monitor(Surface::isSurface);
    ASSERT_THAT(monitor.nodes(), SizeIs(1));
    EXPECT_EQ(monitor.nodes().front().path, firstPath);

    std::optional<VirtualDevice> second(std::in_place); // before anyone listens
    const std::string secondPath = second->path();
    hear(monitor, 1);
    EXPECT_THAT(told, ElementsAre("+" + secondPath));
    first.reset();
    hear(monitor, 2);
    { const VirtualDevice stranger(kStranger); }
    hear(monitor, 0);
    second.reset();
    hear(monitor, 3);
    EXPECT_THAT(told, ElementsAre("+" + secondPath, "-" + firstPath, "-" + secondPath));
    EXPECT_THAT(monitor.nodes(), IsEmpty());
}

TEST_F(HidrawMonitorTest, PluggedInAgainUnderTheSameNameItHasGoneAndCome) {
    std::optional<VirtualDevice> surface(std::in_place);
    const std::string path = surface->path();
    HidrawMonitor monitor(Surface::isSurface);
    surface.reset();
    surface.emplace();
    ASSERT_EQ(surface->path(), path);
    hear(monitor, 2);
    EXPECT_THAT(told, ElementsAre("-" + path, "+" + path));
}

TEST_F(HidrawMonitorTest, NewsThatIsToldAgainIsNoneAndNewsThatIsLostIsMadeUpFor) {
    constexpr int kMoreThanTheKernelKeeps = 2'000;
    std::optional<VirtualDevice> surface(std::in_place);
    const std::string path = surface->path();
    ASSERT_EQ(::seteuid(65534), 0); // to whom the kernel gives no more room than to anyone
    HidrawMonitor monitor(Surface::isSurface);
    ASSERT_EQ(::seteuid(0), 0);
    ASSERT_THAT(monitor.nodes(), SizeIs(1));
    std::ofstream(monitor.nodes().front().folder + "/uevent") << "add"; // the kernel says so
    hear(monitor, 0);
    EXPECT_THAT(told, IsEmpty());
    for (int i = 0; i < kMoreThanTheKernelKeeps; ++i)
        std::ofstream("/sys/devices/virtual/mem/null/uevent") << "change";
    surface.reset();
    hear(monitor, 1);
    EXPECT_THAT(told, ElementsAre("-" + path));
}

} // namespace
} // namespace VeltoTouch::Tests
