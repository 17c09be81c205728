#include "Platform/FileDescriptor.h"
#include "Tests/Support/Lines.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Program.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;
constexpr const char* kTouches =
    "sim:idle:5000,tap:play-pause,idle:400,hold:volume-up:900,idle:400,tap:volume-down,idle:60000";
constexpr std::size_t kEvents = 7; // of these touches
constexpr int kPatienceMs = 20'000;
constexpr int kAbusers = VELTO_IS_SANITIZED ? 20 : 100;
constexpr bool kMemoryCounts = !VELTO_IS_SANITIZED; // a sanitizer keeps what the program has given back

// Calls without pause for so long: what is large, what is unknown, what is of a wrong type.
void abuse(std::chrono::milliseconds duration) {
    sd_bus* bus = nullptr;
    ASSERT_GE(sd_bus_open_system(&bus), 0);
    const std::string megabyte(1'000'000, 'x');
    const auto end = std::chrono::steady_clock::now() + duration;
    const auto isOver = [end] { return std::chrono::steady_clock::now() >= end; };
    const auto call = [&](const char* method, const char* types, auto... arguments) {
        if (isOver())
            return;
        sd_bus_message* reply = nullptr;
        sd_bus_call_method(bus, "org.velto.Touch1", "/org/velto/Touch1/sim", "org.velto.Touch1", method, nullptr,
                           &reply, types, arguments...);
        sd_bus_message_unref(reply);
    };
    while (!isOver()) {
        call("GetProperty", "s", "Recording");
        call("GetProperty", "s", "ServicePluginDebug");
        call("GetProperty", "s", megabyte.c_str());
        call("GetProperty", "d", 0.5);
        call("SetProperty", "sv", "Pipeline.Algs.HoldTimeoutMilliseconds", "s", megabyte.c_str());
        call("SetProperty", "sv", "Pipeline.Algs.HoldTimeoutMilliseconds", "a{sv}", 0);
        call("SetProperty", "sv", "Pipeline.Unknown", "u", 1);
        call("SetProperty", "sv", megabyte.c_str(), "u", 1);
        call("Nothing", "");
    }
    sd_bus_flush_close_unref(bus);
}

// Asks without pause for so long, and never reads an answer.
void askWithoutReading(std::chrono::milliseconds duration) {
    sd_bus* bus = nullptr;
    ASSERT_GE(sd_bus_open_system(&bus), 0);
    for (const auto end = std::chrono::steady_clock::now() + duration; std::chrono::steady_clock::now() < end;) {
        sd_bus_call_method_async(bus, nullptr, "org.velto.Touch1", "/org/velto/Touch1/sim", "org.velto.Touch1",
                                 "GetProperty", nullptr, nullptr, "s", "Recording");
        std::this_thread::sleep_for(1ms);
    }
    sd_bus_close_unref(bus);
}

// What the events say, but for their times: names of gestures, frames and regions.
std::vector<std::string> gesturesIn(const std::string& lines) {
    std::vector<std::string> gestures;
    for (const std::string& line : linesOf(lines)) {
        const auto start = line.find("\"gesture\":");
        if (start != std::string::npos)
            gestures.push_back(line.substr(start, line.find(",\"phase\"") - start));
    }
    return gestures;
}

// The program serves a simulated surface, without keys, on a bus of the test's own.
class BusCommandsTest : public testing::Test {
protected:
    PrivateBus bus;
    TemporaryFolder folder;

    [[nodiscard]] Background serve(const std::string& steps) const {
        Background program = velto().inBackground({"serve", "--no-keys", "--device", steps});
        EXPECT_TRUE(eventually([] { return velto().run({"get", "Version"}).status == 0; }));
        return program;
    }
};

TEST_F(BusCommandsTest, TheSystemsManagerIsToldThatItLivesIsReadyReloadsAndEnds) {
    const std::string path = folder.path("notify");
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    const FileDescriptor manager(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(manager.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const auto next = [&] {
        std::array<char, 64> text{};
        pollfd ready{.fd = manager.get(), .events = POLLIN, .revents = 0};
        if (::poll(&ready, 1, kPatienceMs) == 1)
            std::ignore = ::recv(manager.get(), text.data(), text.size() - 1, 0);
        return std::string(text.data());
    };
    ::setenv("NOTIFY_SOCKET", path.c_str(), 1);
    ::setenv("WATCHDOG_USEC", "60000000", 1);
    Background program = velto().inBackground({"serve", "--no-keys", "--device", "sim:idle:60000"});
    ::unsetenv("NOTIFY_SOCKET");
    ::unsetenv("WATCHDOG_USEC");
    EXPECT_EQ(next(), "WATCHDOG=1");
    EXPECT_EQ(next(), "READY=1");
    program.signal(SIGHUP);
    EXPECT_EQ(next(), "RELOADING=1");
    EXPECT_EQ(next(), "READY=1");
    program.signal(SIGTERM);
    EXPECT_EQ(next(), "STOPPING=1");
    EXPECT_EQ(program.waitForTheEnd(), 0);
}

// Everybody calls at once, and badly.
TEST_F(BusCommandsTest, AbuseChangesNothingInTheStreamOfReports) {
    const auto expected = gesturesIn(velto().run({"run", "--jsonl", "--duration", "9", "--device", kTouches}).output);
    ASSERT_EQ(expected.size(), kEvents);

    Background program = velto().inBackground({"serve", "--no-keys", "--device", kTouches});
    ASSERT_TRUE(eventually([] { return velto().run({"get", "Version"}).status == 0; }));
    const std::string watched = folder.path("watched");
    Background watcher = velto().writingTo(watched).inBackground({"watch", "--jsonl"});
    std::this_thread::sleep_for(2s); // until it watches
    std::vector<std::thread> clients;
    for (int i = 0; i < kAbusers; ++i)
        clients.emplace_back([i] { i % 10 == 0 ? askWithoutReading(6s) : abuse(6s); });
    EXPECT_TRUE(eventually([&] { return gesturesIn(contentOf(watched)).size() >= kEvents; }));
    for (std::thread& client : clients)
        client.join();
    EXPECT_THAT(velto().run({"get", "Pipeline.DebugInfo"}), Ends(0, "{\"DisjointImageCount\":0,\"ResetCount\":0}\n"));
    const std::size_t resident = program.residentKilobytes();
    if (kMemoryCounts) {
        EXPECT_LT(resident, 80'000U) << "of the 15 MB that it began with";
    }
    program.signal(SIGTERM);
    EXPECT_EQ(watcher.waitForTheEnd(), 0);
    EXPECT_EQ(program.waitForTheEnd(), 0);
    EXPECT_EQ(gesturesIn(contentOf(watched)), expected);
}

} // namespace
} // namespace VeltoTouch::Tests
