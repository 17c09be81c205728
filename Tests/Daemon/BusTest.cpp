#include "Tests/Daemon/BusFixture.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;

// The loop goes on, and so does whoever does not ask for what takes long. So much waits of one caller and no more, and
// of all callers so many values.
TEST_F(BusTest, ADeviceThatDoesNotAnswerHoldsUpNothingElse) {
    constexpr std::size_t kCallers = 3;
    constexpr std::size_t kMostOfOne = Bus::CallQueue::kMostOfOneCaller;
    constexpr std::size_t kAnswered = kCallers * kMostOfOne + 1; // one is being done
    constexpr std::size_t kRefused = kCallers * (kMostOfOne + 2) - kAnswered;
    Bus::Client watcher = this->client();
    std::vector<BusHandle> callers(kCallers), writers(Bus::CallQueue::kMostWithValues + 4);
    std::ranges::generate(callers, connection);
    std::ranges::generate(writers, connection);
    Replies replies, written;
    for (std::size_t i = 0; i < kMostOfOne + 2; ++i) {
        for (const BusHandle& caller : callers)
            callSlowly(caller, "GetProperty", replies, "s", "Slow");
    }
    EXPECT_TRUE(happens(callers, [&] { return replies.refused == kRefused; }));
    for (const BusHandle& writer : writers)
        callSlowly(writer, "SetProperty", written, "sv", "Key", "u", 1);
    EXPECT_TRUE(happens(writers, [&] { return written.refused == 4; }));
    EXPECT_EQ(textOf(connection().get(), "Device"), kDevice);
    EXPECT_EQ(call(connection().get(), Bus::kInterface, "GetPublicProperty", "sv", "Version", "u", 1),
              SD_BUS_ERROR_INVALID_ARGS)
        << "no value waits but one to write";

    EventLoop loop;
    std::string seen;
    loop.addTimer(kPatience, [&] { loop.stop(); });
    watcher.watch(
        loop,
        [&](const Gesture& gesture) {
            seen = fmt::format("{} {} {} {}", nameOf(gesture.kind), nameOf(gesture.region.value()), gesture.frame,
                               gesture.time.count());
            loop.stop();
        },
        [&] { loop.stop(); });
    server->tell({GestureKind::HoldStart, PixelRegion::VolumeUp, 17, HostTime(12'345'678'901)});
    loop.run();
    EXPECT_EQ(seen, "holdStart VolumeUp 17 12345678901");
    EXPECT_EQ(replies.answered + written.answered, 0U);

    properties.letSlowGo();
    EXPECT_TRUE(happens(callers, [&] { return replies.answered == kAnswered; }));
    EXPECT_TRUE(happens(writers, [&] { return written.answered == Bus::CallQueue::kMostWithValues; }));
    EXPECT_NO_THROW(std::ignore = client().getProperty("Slow")) << "there is room again";
}

// Whatever it is answered, errors and the library's own answers too. When it reads after all, it is answered again.
TEST_F(BusTest, ACallerThatDoesNotReadIsNotAnsweredForLong) {
    constexpr std::size_t kCalls = 2000;
    constexpr std::size_t kMost = 1000; // the kernel keeps some hundreds for it
    constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
    properties.put("Version", JSON::parse("[19,0,1]"));
    properties.put("Sources", JSON::parse("{}"));
    Bus::Client other = client();
    const std::function<void(const BusHandle&, Replies&)> calls[]{
        [](const BusHandle& silent, Replies& replies) { callSlowly(silent, "GetProperty", replies, "s", "Nothing"); },
        [](const BusHandle& silent, Replies& replies) { callSlowly(silent, "GetProperty", replies, "u", 1); },
        [](const BusHandle& silent, Replies& replies) { callSlowly(silent, "Nothing", replies, ""); },
        [](const BusHandle& silent, Replies& replies) {
            callSlowly(silent, kProperties, "GetAll", replies, "s", Bus::kInterface);
        },
        [](const BusHandle& silent, Replies& replies) { callSlowly(silent, "GetSources", replies, ""); },
        [](const BusHandle& silent, Replies& replies) {
            callSlowly(silent, "org.freedesktop.DBus.Peer", "Ping", replies, "");
        },
    };
    for (const auto& call : calls) {
        SCOPED_TRACE(&call - calls);
        const BusHandle silent = connection();
        Replies replies;
        for (std::size_t i = 0; i < kCalls; ++i) {
            call(silent, replies);
            std::ignore = other.getProperty("Version");
        }
        sd_bus_flush(silent.get());
        EXPECT_TRUE(eventually([&] { return isTaken(silent); }));
        std::ignore = other.getProperty("Version"); // which comes last
        std::ignore = happens(
            std::span(&silent, 1), [] { return false; }, 100ms);
        EXPECT_LT(replies.answered + replies.refused, kMost);
        const auto isAnswered = [&, before = replies.answered] {
            call(silent, replies);
            return replies.answered > before;
        };
        EXPECT_TRUE(happens(std::span(&silent, 1), isAnswered));
    }
}

// While it takes nothing, one answer is made and so many gestures are kept.
TEST_F(BusTest, ABusThatTakesNothingFillsNoMemory) {
    constexpr std::uint32_t kTold = 4000;
    properties.put("Large", makeRef<String>(std::string(100'000, 'x')));
    std::ignore = client();
    const BusHandle listener = connection();
    std::vector<BusHandle> asking(6);
    std::ranges::generate(asking, connection);
    std::size_t heard = 0;
    const auto hear = [](sd_bus_message*, void* count, sd_bus_error*) {
        ++*static_cast<std::size_t*>(count);
        return 0;
    };
    sd_bus_match_signal(listener.get(), nullptr, nullptr, kPath, Bus::kInterface, "Gesture", hear, &heard);
    Replies replies;
    for (const BusHandle& caller : asking) {
        callSlowly(caller, "GetProperty", replies, "s", caller == asking.front() ? "Slow" : "Large");
        sd_bus_flush(caller.get());
        properties.waitForASlowRead();
    }
    EXPECT_EQ(textOf(listener.get(), "Device"), kDevice) << "the others wait now";
    bus.pause();
    properties.letSlowGo();
    EXPECT_TRUE(eventually([&] { return properties.readsOf("Large") > 0; }));
    for (std::uint32_t frame = 0; frame < kTold; ++frame)
        server->tell({GestureKind::Tap, PixelRegion::PlayPause, frame, HostTime(frame)});
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(properties.readsOf("Large"), 1);
    bus.goOn();
    EXPECT_TRUE(happens(asking, [&] { return replies.answered == asking.size(); }));
    EXPECT_TRUE(happens(std::span(&listener, 1), [&] { return heard > 1000; }));
    EXPECT_FALSE(happens(
        std::span(&listener, 1), [&] { return heard > kTold / 2; }, 300ms));
}

TEST_F(BusTest, WhoMayOnlySeeWhatTheSurfaceDoesReadsNothingElse) {
    std::ignore = client();
    const BusHandle raw = connection();
    const auto read = [&](const char* key) {
        properties.put(key, makeRef<Null>());
        return call(raw.get(), Bus::kInterface, "GetPublicProperty", "s", key);
    };
    for (const char* key :
         {"Version", "Pipeline.DebugInfo", "Pipeline.Algs.EventStats", "Pipeline.Algs.HoldTimeoutMilliseconds"})
        EXPECT_EQ(read(key), "v") << key;
    for (const char* key : {"Pipeline.Algs.DebugInfo", "Pipeline.Algs.Nothing", "Recording", "FirmwareDebugReports",
                            "ServicePluginDebug", "Product", "Pipeline", ""}) {
        EXPECT_EQ(read(key), SD_BUS_ERROR_ACCESS_DENIED) << key;
        EXPECT_EQ(properties.readsOf(key), 0) << key;
    }
}

TEST_F(BusTest, AnEndDoesNotWaitForWhatIsQueued) {
    std::ignore = client();
    const BusHandle asking = connection();
    Replies replies;
    for (int i = 0; i < 3; ++i)
        callSlowly(asking, "GetProperty", replies, "s", "Slow");
    sd_bus_flush(asking.get());
    properties.waitForASlowRead();
    std::atomic<bool> isLetGo{false};
    std::thread later([&] {
        std::this_thread::sleep_for(200ms);
        isLetGo = true;
        properties.letSlowGo();
    });
    server.reset();
    EXPECT_TRUE(isLetGo) << "it waits for what is being done";
    later.join();
    EXPECT_EQ(properties.readsOf("Slow"), 1);
}

TEST_F(BusTest, TheObjectSaysWhatItIs) {
    properties.put("Version", JSON::parse("[19,0,1]"));
    properties.put("Sources", JSON::parse(R"({"Key":"a file:1"})"));
    Bus::Client caller = client();
    EXPECT_EQ(JSON::text(caller.sources().get()), R"({"Key":"a file:1"})");
    caller.reload();
    EXPECT_TRUE(properties.access().get("Reloaded")) << "before the answer";
    const BusHandle raw = connection();
    properties.put("Reloaded", nullptr);
    sd_bus_call_method_async(raw.get(), nullptr, "org.velto.Touch1", kPath, Bus::kInterface, "Reload", nullptr, nullptr,
                             "");
    EXPECT_TRUE(happens(std::span(&raw, 1), [&] { return properties.access().get("Reloaded") != nullptr; }))
        << "for whoever wants no answer";
    EXPECT_EQ(textOf(raw.get(), "Device"), kDevice);
    EXPECT_EQ(textOf(raw.get(), "Keyboard"), "/dev/input/event9");
    EXPECT_EQ(caller.configuration(), "/etc/somewhere");
    EXPECT_EQ(caller.user(), ::geteuid());
    EXPECT_EQ(JSON::text(caller.keys().get()), R"({"keys.a":"KEY_B"})");
    EXPECT_EQ(textOf(raw.get(), "Version"), "19.0.1");
    EXPECT_EQ(callAt(Bus::kObjects, raw.get(), "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", ""),
              "a{oa{sa{sv}}}");
}

TEST_F(BusTest, AWatchFailsWithTheBus) {
    Bus::Client watching = client();
    EventLoop loop;
    watching.watch(
        loop, [](const Gesture&) {}, [] { FAIL() << "the surface is still there"; });
    loop.addTimer(kPatience, [&] { loop.stop(); });
    bus.stop(SIGKILL);
    EXPECT_THROW(loop.run(), std::runtime_error);
}

TEST_F(BusTest, ABusThatComesBackFindsTheSurfaceAgain) {
    std::ignore = client();
    bus.stop();
    server->tell({GestureKind::Tap, PixelRegion::PlayPause, 1, HostTime(1)});
    EXPECT_EQ(refusal(""), "there is no bus: No such file or directory");
    std::this_thread::sleep_for(1500ms); // until it has seen that too
    server->tell({GestureKind::Tap, PixelRegion::PlayPause, 2, HostTime(2)});
    bus.start();
    properties.put("Key", Number::withUnsignedLong(1));
    EXPECT_EQ(as<Number>(client().getProperty("Key"))->longLongValue(), 1);
    const BusHandle raw = connection();
    sd_bus_message* counters = nullptr;
    ASSERT_GE(sd_bus_get_property(raw.get(), "org.velto.Touch1", kPath, Bus::kInterface, "Counters", nullptr, &counters,
                                  "a{st}"),
              0);
    EXPECT_EQ(readCounters(BusMessage(counters).get())["events"], 2U) << "those that nobody was told of count too";
}

TEST_F(BusTest, OfSeveralSurfacesOneIsChosen) {
    Properties others;
    others.put("Key", makeRef<String>("the other's"));
    properties.put("Key", makeRef<String>("the first's"));
    std::ignore = client();
    std::optional<Server> other(std::in_place, others, "replay:some-file.json");
    const auto read = [&](const std::string& device) { return as<String>(client(device).getProperty("Key"))->text(); };
    EXPECT_EQ(read("replay"), "the other's");
    EXPECT_EQ(read(kDevice), "the first's");
    EXPECT_EQ(read("hidraw7"), "the first's");
    EXPECT_EQ(refusal(""), "several surfaces are served, say which: hidraw7, replay");
    EXPECT_EQ(refusal("sim"), "sim is not served, but hidraw7, replay");
    server.reset();
    EXPECT_EQ(read(""), "the other's");
    const BusHandle raw = connection();
    EXPECT_TRUE(eventually([&] {
        return callAt("/org/velto/Touch1/replay", raw.get(), Bus::kInterface, "GetProperty", "s", "Key") == "v";
    })) << "the name that all have in common passes on";
    EXPECT_EQ(refusal(kDevice), "/dev/hidraw7 is not served, but replay");
    other.reset();
    EXPECT_EQ(refusal(""), "no surface is served (velto serve does that)");
    const Server d(others, "d"), c(others, "c"), b(others, "b"), a(others, "a");
    for (const char* device : {"a", "b", "c", "d"})
        std::ignore = client(device);
    EXPECT_EQ(refusal(""), "several surfaces are served, say which: a, b, c, d");
}

TEST(NamesTest, ADevicesElementIsPlain) {
    for (const auto& [device, element] :
         {std::pair("/dev/hidraw7", "hidraw7"), {"sim:tap:play-pause", "sim"}, {"/dev/aZ_-Az/09AZaz~", "09AZaz"}})
        EXPECT_EQ(Bus::elementOf(device), element);
}

} // namespace
} // namespace VeltoTouch::Tests
