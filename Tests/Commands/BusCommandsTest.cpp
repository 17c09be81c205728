#include "Platform/Linux/FileDescriptor.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/Served.h"
#include "Tests/Support/SmallRecordings.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>
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
using testing::AllOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::StartsWith;
constexpr const char* kTouches =
    "sim:idle:5000,tap:play-pause,idle:400,hold:volume-up:900,idle:400,tap:volume-down,idle:60000";
constexpr std::size_t kEvents = 7; // of these touches
constexpr int kPatienceMs = 20'000;
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
    // Watches until all touches have been told and `work` is done, and then to the end of the program, which it ends.
    // Gives the lines.
    [[nodiscard]] std::string watchToTheEnd(
        Background& program, const std::function<void()>& work, const std::function<void()>& meanwhile = [] {}) const {
        const std::string watched = folder.path("watched");
        Background watcher = velto().writingTo(watched).inBackground({"watch", "--jsonl"});
        meanwhile();
        EXPECT_TRUE(eventually([&] { return gesturesIn(contentOf(watched)).size() >= kEvents; }));
        work();
        program.signal(SIGTERM);
        EXPECT_EQ(watcher.waitForTheEnd(), 0);
        EXPECT_EQ(program.waitForTheEnd(), 0);
        return contentOf(watched);
    }
};

TEST_F(BusCommandsTest, PropertiesAreReadAndWritten) {
    Background program = serve("sim:idle:60000");
    EXPECT_THAT(velto().run({"get", "Version", "Pipeline.Algs.HoldTimeoutMilliseconds"}), Ends(0, "[19,0,0]\n500\n"));
    EXPECT_THAT(velto().run({"set", "Pipeline.Algs.HoldTimeoutMilliseconds=250"}), Ends(0, ""));
    EXPECT_THAT(velto().run({"get", "--jsonl", "Pipeline.Algs.HoldTimeoutMilliseconds", "Nothing", "Product"}),
                Ends(1,
                     "{\"kind\":\"property\",\"key\":\"Pipeline.Algs.HoldTimeoutMilliseconds\",\"value\":250}\n"
                     "{\"kind\":\"property\",\"key\":\"Product\",\"value\":\"Simulated Touch Surface\"}\n",
                     "velto: Nothing: there is no value under this key\n"));
    EXPECT_THAT(velto().run({"set", "Product=1", "ActivationThreshold=1"}),
                Ends(1, "",
                     "velto: Product: the device does not take this value\n"
                     "velto: ActivationThreshold: the device does not take this value"
                     " (did you mean 'Pipeline.Algs.ActivationThreshold'?)\n"));
    EXPECT_THAT(
        velto().run({"set", "Pipeline.Algs.EnableTapSuppression=0", "Pipeline.Algs.HoldTimeoutMilliseconds=-7"}),
        Ends(2, "", testing::Ne("")));
    EXPECT_THAT(
        velto().run({"get"}),
        Ends(0, AllOf(ContainsRegex("\nPipeline.Algs.HoldTimeoutMilliseconds +250 +500 +integer +0 to 4294967295\n"),
                      ContainsRegex("\nPipeline.Algs.EnableTapSuppression +true +true +switch "),
                      ContainsRegex("\nPipeline.Algs.VirtualNormalizationFactors.22 +0.6667 +0.6667 +float "),
                      ContainsRegex("\n  Dispatched.numTaps +0\n"), ContainsRegex("\nVersion +.19,0,0. +array\n"),
                      EndsWith("By name only: Pipeline.Algs.DebugInfo, Recording, FirmwareDebugReports, "
                               "FactoryResetHoldDuration, ServicePluginDebug\n"))));
    EXPECT_THAT(velto().run({"get", "--jsonl"}).output,
                StartsWith(R"({"kind":"property","key":"Pipeline.Algs.HoldTimeoutMilliseconds","value":250,)"
                           R"("type":"integer","range":[0,4294967295],"default":500})"
                           "\n"));
    EXPECT_THAT(velto().run({"get", "Version", "--device", "/dev/hidraw3"}),
                Ends(1, "", "velto: /dev/hidraw3 is not served, but sim\n"));
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForTheEnd(), 0);
    EXPECT_THAT(velto().run({"record"}), Ends(1, "", "velto: no surface is served (velto serve does that)\n"));
}

TEST_F(BusCommandsTest, WhatIsWatchedIsWhatIsRecorded) {
    Background program = serve(kTouches);
    const std::string recording = folder.path("recording.json");
    const std::string table = folder.path("table");
    Background watcher = velto().writingTo(table).inBackground({"watch"});
    const std::string watched = watchToTheEnd(program, [&] {
        EXPECT_THAT(velto().run({"record", "-o", recording}), Ends(0, ""));
    });
    const auto replayed = gesturesIn(velto().run({"replay", "--jsonl", recording}).output);
    EXPECT_EQ(replayed.size(), kEvents);
    EXPECT_EQ(gesturesIn(watched), replayed);
    EXPECT_EQ(watcher.waitForTheEnd(), 0);
    EXPECT_THAT(contentOf(table), testing::MatchesRegex("[^\n]*\n[^\n]*PlayPause[^\n]*\n[^\n]*VolumeUp[^\n]*\n"
                                                        "[^\n]*VolumeDown[^\n]*\n"));
}

TEST_F(BusCommandsTest, ARecordingAtItsBoundIsToldOf) {
    SmallRecording atOnce; // but for the last report
    for (std::uint64_t i = 0; i <= kMaxRecordedFrames; ++i)
        atOnce.send({0x03});
    Background program = serve("replay:" + folder.write("many.json", atOnce.images(400, {}).text()));
    const auto record = [] { return velto().run({"record"}).errors; };
    EXPECT_TRUE(eventually([&] { return record() != ""; }));
    EXPECT_THAT(record(), testing::MatchesRegex("velto: standard output: the recording has reached its bound of 4350 "
                                                "reports and accelerometer samples and holds the newest [0-9.]+ s\n"));
}

TEST_F(BusCommandsTest, WatchesAndServicesEndByThemselves) {
    Background program = serve("sim:idle:4000");
    EXPECT_THAT(velto().run({"watch", "--jsonl", "--duration", "0.1"}), Ends(0, ""));
    EXPECT_THAT(velto().run({"watch", "--duration", "0.1"}), Ends(0, testing::Ne("")));
    EXPECT_EQ(program.waitForTheEnd(), 0) << "as the device goes";
}

TEST_F(BusCommandsTest, AServiceWithoutABusSaysSoOnce) {
    bus.stop();
    EXPECT_THAT(velto().run({"serve", "--no-keys", "--device", "sim:idle:2500"}),
                Ends(0, "", testing::MatchesRegex("[^\n]*there is no bus: [^\n]*\n")));
}

TEST_F(BusCommandsTest, TheSystemsManagerIsToldThatItLivesIsReadyAndEnds) {
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
    program.signal(SIGTERM);
    EXPECT_EQ(next(), "STOPPING=1");
    EXPECT_EQ(program.waitForTheEnd(), 0);
}

// Everybody calls at once, and badly.
TEST_F(BusCommandsTest, AbuseChangesNothingInTheStreamOfReports) {
    const auto expected = gesturesIn(velto().run({"run", "--jsonl", "--duration", "9", "--device", kTouches}).output);
    ASSERT_EQ(expected.size(), kEvents);

    Background program = serve(kTouches);
    std::vector<std::thread> clients;
    const std::string watched = watchToTheEnd(
        program,
        [&] {
            for (std::thread& client : clients)
                client.join();
            EXPECT_THAT(velto().run({"get", "Pipeline.DebugInfo"}),
                        Ends(0, "{\"DisjointImageCount\":0,\"ResetCount\":0}\n"));
            const std::size_t resident = residentKilobytes(program.process());
            EXPECT_GT(resident, 0U);
            if (kMemoryCounts) {
                EXPECT_LT(resident, 80'000U) << "of the 15 MB that it began with";
            }
        },
        [&] {
            std::this_thread::sleep_for(2s); // until it watches
            for (int i = 0; i < 100; ++i)
                clients.emplace_back([i] { i % 10 == 0 ? askWithoutReading(6s) : abuse(6s); });
        });
    EXPECT_EQ(gesturesIn(watched), expected);
}

} // namespace
} // namespace VeltoTouch::Tests
