#include "Tests/Kernel/KeyReader.h"
#include "Tests/System/Guest.h"

#include <fstream>

#include <sched.h>

namespace VeltoTouch::Tests {
namespace {

// How many threads of a process run round-robin at this priority.
int threadsAt(int priority, const std::string& pid) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/" + pid + "/task")) {
        const pid_t thread = std::stoi(entry.path().filename());
        sched_param parameters{};
        if (::sched_getscheduler(thread) == SCHED_RR && ::sched_getparam(thread, &parameters) == 0)
            count += parameters.sched_priority == priority ? 1 : 0;
    }
    return count;
}

std::string ownersOf(const std::string& node) { return shell("stat --format '%U %G %a' " + node).output; }

std::string failedUnits() { return shell("systemctl list-units --failed --plain --no-legend").output; }

TEST(SurfaceServiceTest, EachTimeItIsPluggedInTheSurfaceGetsItsService) {
    EXPECT_EQ(failedUnits(), "") << "before";
    for (int round = 1; round <= 4; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        KernelNews news;
        ServedSurface surface;
        KeyReader keyboard(news.waitForNode("input/event"));
        ASSERT_TRUE(surface.waitUntilServed());
        EXPECT_EQ(ownersOf(surface.node()), "root velto 660");
        EXPECT_EQ(threadsAt(63, surface.property("MainPID")), 1);
        surface.play("tap:play-pause");
        EXPECT_THAT(keyboard.next(2), testing::ElementsAre("+Play", "-Play"));
        surface.unplug();
        EXPECT_TRUE(surface.waitUntilState("inactive"));
        EXPECT_EQ(surface.property("NRestarts"), "0");
    }
    EXPECT_EQ(ownersOf("/dev/uinput"), "root velto-uinput 660");
    EXPECT_EQ(failedUnits(), "") << "after";
}

TEST(SurfaceServiceTest, AnotherDeviceIsLeftAlone) {
    const VirtualDevice mouse({.product = "Mouse",
                               .reportDescriptor = {0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0x09, 0x30, 0x15, 0x81, 0x25,
                                                    0x7F, 0x75, 0x08, 0x95, 0x01, 0x81, 0x06, 0xC0}});
    EXPECT_EQ(shell("udevadm settle").status, 0);
    EXPECT_EQ(ownersOf(mouse.path()), "root root 600");
    EXPECT_EQ(shell("systemctl list-units --all --plain --no-legend 'velto-touch@*'").output, "");
}

TEST(SurfaceServiceTest, OneThatDiesStartsAgain) {
    ServedSurface surface;
    ASSERT_TRUE(surface.waitUntilServed());
    EXPECT_EQ(shell("systemctl kill --signal=KILL " + surface.unit()).status, 0);
    EXPECT_TRUE(surface.waitUntilServed(2));
    EXPECT_EQ(surface.property("NRestarts"), "1");
}

// With less patience than the unit has.
TEST(SurfaceServiceTest, OneThatHangsStartsAgainAndOneThatHasNothingToDoDoesNotHang) {
    const std::filesystem::path folder = "/run/systemd/system/velto-touch@.service.d";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "impatient.conf") << "[Service]\nWatchdogSec=3\nTimeoutAbortSec=1\n";
    EXPECT_EQ(shell("systemctl daemon-reload").status, 0);
    {
        ServedSurface surface;
        ASSERT_TRUE(surface.waitUntilServed());
        std::this_thread::sleep_for(std::chrono::seconds(5));
        EXPECT_EQ(surface.property("NRestarts"), "0");
        EXPECT_EQ(shell("systemctl kill --signal=STOP " + surface.unit()).status, 0);
        EXPECT_TRUE(surface.waitUntilServed(2));
    }
    std::filesystem::remove_all(folder);
    EXPECT_EQ(shell("systemctl daemon-reload").status, 0);
}

// Each stage is broken, and what the last one advises mends them all.
TEST(SurfaceServiceTest, TheDoctorSaysWhatIsWrong) {
    KernelNews news;
    ServedSurface surface;
    const KeyReader reader(news.waitForNode("input/event"));
    ASSERT_TRUE(surface.waitUntilServed());
    const std::string unit = surface.unit();
    const std::string asVisitor = "setpriv --reuid=visitor --regid=visitor --init-groups ";
    const auto doctor = [&](const std::string& breaking, const std::string& who = "") {
        EXPECT_EQ(shell(breaking).status, 0) << breaking;
        return shell(who + "velto doctor --device " + surface.node()).output;
    };
    using testing::HasSubstr;
    EXPECT_THAT(doctor("true", asVisitor), HasSubstr("opened by its service\nNO        not allowed"));
    EXPECT_THAT(doctor("systemctl stop " + unit), HasSubstr(unit + " does not run\n          sudo systemctl restart "));
    EXPECT_THAT(doctor("true", asVisitor), HasSubstr("(root:velto 0660)\n          join the group velto"));
    EXPECT_THAT(doctor("chgrp root /dev/uinput && systemctl start --no-block " + unit + " && sleep 1"),
                AllOf(HasSubstr(unit + " does not come up (exit-code), and /dev/uinput does not belong to the group"),
                      HasSubstr("          sudo udevadm trigger")));
    const std::string page = doctor("systemctl stop " + unit + " && systemctl mask --runtime " + unit);
    EXPECT_THAT(page, HasSubstr(" is masked\n"));
    const std::string advice = page.substr(page.rfind("  sudo "));
    EXPECT_EQ(shell("sudo() { \"$@\"; }; " + advice).status, 0) << advice;
    EXPECT_THAT(doctor("true"), HasSubstr("no reports come (0 since the start)"));
}

constexpr const char* kHoldTimeout = "Pipeline.Algs.HoldTimeoutMilliseconds";

std::string holdTimeout() { return shell(std::string("velto get --jsonl ") + kHoldTimeout).output; }

constexpr const char* kFromWhatIsKept = R"("source":"/etc/velto-touch/config.d/90-set.toml:)";

// In the line that shows it.
void expectHoldTimeout(const std::string& part) {
    EXPECT_TRUE(eventually([&] { return holdTimeout().find(part) != std::string::npos; })) << holdTimeout();
}

// What `run` kept before the system started, a key among it that the default keyboard has not. Before the test that
// keeps something else.
TEST(SurfaceServiceTest, WhatWasKeptBeforeTheStartHolds) {
    KernelNews news;
    ServedSurface surface;
    KeyReader keyboard(news.waitForNode("input/event"));
    ASSERT_TRUE(surface.waitUntilServed());
    expectHoldTimeout(std::string("\"value\":470,") + kFromWhatIsKept);
    surface.play("tap:volume-up");
    EXPECT_THAT(keyboard.next(2), testing::ElementsAre("+Next", "-Next"));
}

// At once and after a reload, where nothing was kept before. The keyboard is made anew for a key that it has not.
TEST(SurfaceServiceTest, WhatIsKeptHolds) {
    const std::string setting = kHoldTimeout;
    std::filesystem::remove_all("/etc/velto-touch/config.d");
    KernelNews news;
    ServedSurface surface;
    std::string keyboard = news.waitForNode("input/event");
    ASSERT_TRUE(surface.waitUntilServed());
    EXPECT_EQ(shell("velto set --keep " + setting + "=450 keys.tap.play-pause=KEY_MUTE").output, "");
    keyboard = news.waitForNode("input/event");
    EXPECT_EQ(shell("velto set " + setting + "=300").output, "");
    EXPECT_THAT(holdTimeout(), testing::HasSubstr("set for now"));
    EXPECT_EQ(shell("systemctl reload " + surface.unit()).output, "");
    expectHoldTimeout(std::string("\"value\":450,") + kFromWhatIsKept);
    KeyReader reader(keyboard);
    surface.play("tap:play-pause");
    EXPECT_THAT(reader.next(2), testing::ElementsAre("+Mute", "-Mute"));
    EXPECT_EQ(surface.property("NRestarts"), "0");
    EXPECT_THAT(shell("su -s /bin/sh sitter -c 'velto set --keep " + setting + "=1'").output,
                testing::HasSubstr("only root may keep settings"));
}

// The last, since it leaves no system to test where it fails.
TEST(SurfaceServiceTest, ItComesAndGoesWithThePackage) {
    ServedSurface surface;
    ASSERT_TRUE(surface.waitUntilServed());
    const std::string before = surface.property("MainPID");

    EXPECT_EQ(shell("dpkg --install /opt/*.deb").status, 0) << "over itself";
    EXPECT_TRUE(surface.waitUntilServed(2));
    EXPECT_NE(surface.property("MainPID"), before);

    EXPECT_EQ(shell("dpkg --remove velto-touch").status, 0);
    EXPECT_EQ(shell("systemctl list-units --all --plain --no-legend 'velto-touch@*'").output, "");
    EXPECT_EQ(ownersOf(surface.node()) + ", " + ownersOf("/dev/uinput"), "root root 600, root root 600");

    EXPECT_EQ(shell("dpkg --install /opt/*.deb").status, 0);
    EXPECT_TRUE(surface.waitUntilServed(3));
    EXPECT_EQ(ownersOf(surface.node()) + ", " + ownersOf("/dev/uinput"), "root velto 660, root velto-uinput 660");
    expectHoldTimeout(kFromWhatIsKept);
    EXPECT_EQ(failedUnits(), "");
}

} // namespace
} // namespace VeltoTouch::Tests
