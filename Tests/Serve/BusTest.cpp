#include "Platform/JSON.h"
#include "Serve/Bus/Client.h"
#include "Serve/Bus/TouchObject.h"
#include "Serve/EventLoop.h"
#include "Tests/Support/PrivateBus.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;

constexpr auto kPatience = 20s;
constexpr const char* kDevice = "/dev/hidraw7";
constexpr const char* kPath = "/org/velto/Touch1/hidraw7";

using Counters = std::map<std::string, std::uint64_t>;

// Properties in the place of a service's.
class Properties {
public:
    [[nodiscard]] Bus::ServiceProperties access() {
        return {.get = [this](const std::string& key) { return get(key); },
                .set = [this](const std::string& key, const Ref<Value>& value) { return set(key, value); }};
    }
    void put(const std::string& key, Ref<Value> value) {
        const std::lock_guard guard(_lock);
        _values[key] = std::move(value);
    }
    // Reading "Slow" takes until it is let go.
    void letSlowGo() {
        const std::lock_guard guard(_lock);
        _isSlow = false;
        _changed.notify_all();
    }

    void waitForASlowRead() {
        std::unique_lock guard(_lock);
        _changed.wait_for(guard, kPatience, [&] { return _slowReads > 0; });
    }
    [[nodiscard]] int slowReads() {
        const std::lock_guard guard(_lock);
        return _slowReads;
    }

private:
    Ref<Value> get(const std::string& key) {
        std::unique_lock guard(_lock);
        if (key == "Slow") {
            ++_slowReads;
            _changed.notify_all();
            _changed.wait(guard, [&] { return !_isSlow; });
        }
        const auto found = _values.find(key);
        return found == _values.end() ? nullptr : found->second;
    }
    bool set(const std::string& key, const Ref<Value>& value) {
        if (key == "ReadOnly")
            return false;
        put(key, value);
        return true;
    }

    std::mutex _lock;
    std::condition_variable _changed;
    bool _isSlow = true;
    int _slowReads = 0;
    std::map<std::string, Ref<Value>> _values{{"Slow", makeRef<Null>()}};
};

// A program that serves a surface, on a thread.
class Server {
public:
    Server(Properties& properties, const char* device)
        : _thread([this, &properties, device] {
              Bus::TouchObject object(_loop, Bus::Which::System,
                                      {.device = device,
                                       .properties = properties.access(),
                                       .deliveredReports = [reports = 42U]() mutable { return reports++; }});
              _object = &object;
              _loop.run();
          }) {}
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        _loop.stop();
        _thread.join();
    }

    void tell(const GestureEvent& event, std::uint64_t timeNs) {
        _loop.post([this, event, timeNs] { _object->tellGesture(event, timeNs); });
    }

private:
    EventLoop _loop;
    Bus::TouchObject* _object = nullptr;
    std::thread _thread;
};

class BusTest : public testing::Test {
protected:
    PrivateBus bus;
    Properties properties;
    std::optional<Server> server{std::in_place, properties, kDevice};

    void TearDown() override { properties.letSlowGo(); }

    [[nodiscard]] static Bus::Client client(const std::string& device = "") {
        EXPECT_TRUE(eventually([&] { return refusal(device).empty(); })) << refusal(device);
        return {Bus::Which::System, device};
    }

    // Why there is no client for a device; empty where there is one.
    [[nodiscard]] static std::string refusal(const std::string& device) {
        try {
            const Bus::Client client(Bus::Which::System, device);
            return "";
        } catch (const std::exception& error) {
            return error.what();
        }
    }

    // A connection for what no client of ours would say.
    [[nodiscard]] static BusHandle connection() { return madeBy<BusHandle>(sd_bus_open_system, "bus"); }

    struct Replies {
        std::size_t answered = 0;
        std::size_t refused = 0; // as too many
    };
    // Calls a method of the object; the reply is counted when it comes: see processUntil.
    template <class... Arguments>
    static void callSlowly(const BusHandle& connection, const char* method, Replies& replies, const char* types,
                           Arguments... arguments) {
        const auto count = [](sd_bus_message* reply, void* data, sd_bus_error*) {
            auto& counted = *static_cast<Replies*>(data);
            ++(sd_bus_message_is_method_error(reply, SD_BUS_ERROR_LIMITS_EXCEEDED) > 0 ? counted.refused
                                                                                       : counted.answered);
            return 0;
        };
        sd_bus_call_method_async(connection.get(), nullptr, "org.velto.Touch1", kPath, Bus::kInterface, method, count,
                                 &replies, types, arguments...);
    }
    static void processUntil(std::span<const BusHandle> connections, const std::function<bool()>& isTrue) {
        EXPECT_TRUE(eventually([&] {
            for (const BusHandle& connection : connections) {
                while (sd_bus_process(connection.get(), nullptr) > 0) {
                }
            }
            return isTrue();
        }));
    }

    // Calls a method of an object; gives the name of the error, or of the types of the reply.
    template <class... Arguments>
    static std::string callAt(const char* path, sd_bus* connection, const char* interface, const char* method,
                              const char* types, Arguments... arguments) {
        BusError error;
        sd_bus_message* reply = nullptr;
        sd_bus_call_method(connection, "org.velto.Touch1", path, interface, method, error.get(), &reply, types,
                           arguments...);
        const BusMessage owner(reply);
        std::string result = error.isSet()      ? error.get()->name
                             : reply == nullptr ? ""
                                                : sd_bus_message_get_signature(reply, 1);
        return result;
    }
    template <class... Arguments>
    static std::string call(sd_bus* connection, const char* interface, const char* method, const char* types,
                            Arguments... arguments) {
        return callAt(kPath, connection, interface, method, types, arguments...);
    }

    // What the object says of itself, "" where it says nothing.
    static std::string textOf(sd_bus* connection, const char* property) {
        BusError error;
        char* text = nullptr;
        sd_bus_get_property_string(connection, "org.velto.Touch1", kPath, Bus::kInterface, property, error.get(),
                                   &text);
        std::string result = text == nullptr ? "" : text;
        std::free(text); // NOLINT(cppcoreguidelines-no-malloc): the library's
        return result;
    }

    // Reads the counters that come next in a message.
    static Counters readCounters(sd_bus_message* message) {
        Counters counters;
        sd_bus_message_enter_container(message, 'a', "{st}");
        const char* name = nullptr;
        for (std::uint64_t count = 0; sd_bus_message_read(message, "{st}", &name, &count) > 0;)
            counters[name] = count;
        return counters;
    }

    // Lets a connection's handlers be called until something comes true, or for so long.
    static void process(sd_bus* connection, std::chrono::milliseconds duration, const std::function<bool()>& isTrue) {
        for (const auto deadline = std::chrono::steady_clock::now() + duration;
             !isTrue() && std::chrono::steady_clock::now() < deadline;) {
            if (sd_bus_process(connection, nullptr) == 0)
                sd_bus_wait(connection, 100'000);
        }
    }
};

TEST_F(BusTest, ValuesPassBothWays) {
    struct Row {
        Ref<Value> sent;
        Ref<Value> received;
    };
    const auto same = [](Ref<Value> value) { return Row{.sent = value, .received = value}; };
    const auto parsed = [](const char* text) { return JSON::parse(text); };
    const auto nested = [](const std::string& innermost) {
        const std::size_t levels = Bus::kDeepestValue - 1;
        return JSON::parse(std::string(levels, '[') + innermost + std::string(levels, ']'));
    };
    const Row rows[]{
        same(Number::withBool(true)),
        same(Number::withLongLong(std::numeric_limits<std::int64_t>::min())),
        same(Number::withUnsignedLong(std::numeric_limits<std::uint64_t>::max())),
        same(Number::withDouble(0.1)),
        same(Number::withDouble(std::numeric_limits<double>::infinity())),
        {.sent = Number::withFloat(0.1F), .received = Number::withDouble(static_cast<double>(0.1F))},
        same(makeRef<String>("Gr\u00FC\u00DFe")),
        {.sent = makeRef<String>(std::string("a\0b\xFF"
                                             "c",
                                             5)),
         .received = makeRef<String>("a\uFFFDb\uFFFDc")},
        same(makeRef<Null>()),
        same(makeRef<Data>(std::string("\0\xFF", 2))),
        same(parsed("[]")),
        same(parsed("{}")),
        same(parsed(R"([1,[null,"x"],{"a":[true],"b":{"c":-2.5}}])")),
        same(nested("1")),
        same(nested("[]")),
        same(makeRef<String>(std::string(60'000, 'x'))),
    };
    Bus::Client client = this->client();
    for (const Row& row : rows) {
        client.setProperty("Key", *row.sent);
        const Ref<Value> received = client.getProperty("Key");
        EXPECT_TRUE(CFEqual(received.get(), row.received.get()))
            << JSON::text(row.sent.get()) << " became " << JSON::text(received.get());
        EXPECT_EQ(as<Number>(row.received) != nullptr && as<Number>(row.received)->isBool(),
                  as<Number>(received) != nullptr && as<Number>(received)->isBool());
    }
}

TEST_F(BusTest, ValuesOfOtherTypesAreRead) {
    Bus::Client client = this->client();
    const BusHandle raw = connection();
    const auto read = [&](const char* types, auto... values) {
        const std::string error = call(raw.get(), Bus::kInterface, "SetProperty", "sv", "Key", types, values...);
        return error + JSON::text(client.getProperty("Key").get());
    };
    EXPECT_EQ(read("y", 200), "200");
    EXPECT_EQ(read("q", 60'000), "60000");
    EXPECT_EQ(read("u", 4'000'000'000U), "4000000000");
    EXPECT_EQ(read("n", -2), "-2");
    EXPECT_EQ(read("i", -3), "-3");
    EXPECT_EQ(read("o", "/a/b"), "\"/a/b\"");
    EXPECT_EQ(read("g", "ai"), "\"ai\"");
    EXPECT_EQ(read("a{ss}", 1, "a", "b"), "{\"a\":\"b\"}");
    EXPECT_EQ(read("(si)", "a", 1), "[\"a\",1]");
    EXPECT_EQ(read("v", "v", "s", "x"), "\"x\"");
}

TEST_F(BusTest, ValuesAreTakenUpToTheirBound) {
    constexpr std::size_t kMost = Bus::PropertyRequests::kLargestValue;
    Bus::Client client = this->client();
    const auto listOf = [](std::size_t count, const char* element) {
        return makeRef<Array>(std::vector<Ref<Value>>(count, JSON::parse(element)));
    };
    const std::pair<Ref<Value>, Ref<Value>> rows[]{
        {makeRef<Data>(std::string(kMost, 'x')), makeRef<Data>(std::string(kMost + 1, 'x'))},
        {makeRef<String>(std::string(kMost - 1, 'x')), makeRef<String>(std::string(kMost, 'x'))},
        {listOf(kMost / 8 - 1, "1"), listOf(kMost / 8, "1")},
        {listOf(kMost - 1, "[]"), listOf(kMost, "[]")},
    };
    for (const auto& [largest, tooLarge] : rows) {
        EXPECT_NO_THROW(client.setProperty("Key", *largest));
        EXPECT_THROW(client.setProperty("Key", *tooLarge), std::runtime_error);
    }
}

TEST_F(BusTest, WhatCannotBeDoneIsRefused) {
    constexpr const char* kUnknown = SD_BUS_ERROR_UNKNOWN_PROPERTY;
    constexpr const char* kInvalid = SD_BUS_ERROR_INVALID_ARGS;
    constexpr const char* kTooMuch = SD_BUS_ERROR_LIMITS_EXCEEDED;
    const BusHandle raw = connection();
    const std::string megabyte(1'000'000, 'x');
    client().setProperty("Deep", *JSON::parse("[1]"));
    properties.put("Deeper", JSON::parse("[[[[[[[[[[[[[[[[1]]]]]]]]]]]]]]]]"));
    const auto get = [&](const char* key) { return call(raw.get(), Bus::kInterface, "GetProperty", "s", key); };
    const auto set = [&](const char* key, const char* types, auto... values) {
        return call(raw.get(), Bus::kInterface, "SetProperty", "sv", key, types, values...);
    };
    EXPECT_EQ(get("Deep"), "v");
    EXPECT_EQ(get("Nothing"), kUnknown);
    EXPECT_EQ(get(megabyte.c_str()), kInvalid);
    EXPECT_EQ(get(std::string(Bus::PropertyRequests::kLongestKey, 'x').c_str()), kUnknown);
    EXPECT_EQ(get(std::string(Bus::PropertyRequests::kLongestKey + 1, 'x').c_str()), kInvalid);
    EXPECT_EQ(get("Deeper"), kTooMuch);
    properties.put("Huge", makeRef<String>(std::string(Bus::kLargestSent + 1, 'x')));
    EXPECT_EQ(get("Huge"), kTooMuch);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "GetProperty", "u", 1), kInvalid);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "GetProperty", ""), kInvalid);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "SetProperty", "ss", "Key", "x"), kInvalid);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "Explode", ""), SD_BUS_ERROR_UNKNOWN_METHOD);
    EXPECT_EQ(call(raw.get(), "org.freedesktop.DBus.Properties", "Set", "ssv", Bus::kInterface, "Device", "s", "x"),
              SD_BUS_ERROR_PROPERTY_READ_ONLY);

    EXPECT_EQ(set("Key", "a{us}", 1, 1, "b"), kInvalid);
    EXPECT_EQ(set("Key", "h", 0), SD_BUS_ERROR_NOT_SUPPORTED) << "no file descriptor reaches us";
    EXPECT_EQ(set("Key", "s", megabyte.c_str()), kTooMuch);
    EXPECT_EQ(set("Key", "aaaaaaaaaaaaaaaaas", 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0), kTooMuch);
    EXPECT_EQ(set(megabyte.c_str(), "u", 1), kInvalid);
    EXPECT_EQ(set("ReadOnly", "u", 1), SD_BUS_ERROR_PROPERTY_READ_ONLY);

    EXPECT_EQ(set("Pipeline.Algs.HoldTimeoutMilliseconds", "u", 1), "");
    EXPECT_EQ(set("Pipeline.Algs.HoldTimeoutMilliseconds", "s", "1"), kInvalid);
    EXPECT_EQ(set("Pipeline.Algs.ResetEventStats", "s", "please"), "");
    EXPECT_TRUE(CFEqual(client().getProperty("Pipeline.Algs.ResetEventStats").get(), makeRef<Null>().get()));
    EXPECT_EQ(set("Pipeline.Algs.Anything", "u", 1), kUnknown);
    EXPECT_EQ(set("Pipeline", "u", 1), "") << "no key of the pipeline";
}

// The loop goes on, and so does whoever does not ask for what takes long. One caller takes little room from the others,
// and who reads takes none from who writes.
TEST_F(BusTest, ADeviceThatDoesNotAnswerHoldsUpNothingElse) {
    constexpr std::size_t kCallers = 70;
    constexpr std::size_t kCallsEach = Bus::PropertyRequests::kMostOfOneCaller + 1;
    constexpr std::size_t kAnswered = Bus::PropertyRequests::kMostWaiting;
    constexpr std::size_t kRefused = kCallers * kCallsEach - kAnswered;
    Bus::Client watcher = this->client();
    std::vector<BusHandle> callers(kCallers);
    std::ranges::generate(callers, connection);
    Replies replies;
    for (std::size_t i = 0; i < kCallsEach; ++i) {
        for (const BusHandle& caller : callers)
            callSlowly(caller, "GetProperty", replies, "s", "Slow");
    }
    processUntil(callers, [&] { return replies.refused == kRefused; });
    EXPECT_EQ(replies.refused, kRefused);
    const BusHandle writer = connection();
    Replies written;
    callSlowly(writer, "SetProperty", written, "sv", "Key", "u", 1);

    EventLoop loop;
    std::string seen;
    loop.addTimer(kPatience, [&] { loop.stop(); });
    watcher.watch(
        loop,
        [&](const GestureEvent& event, std::uint64_t timeNs) {
            seen = fmt::format("{} {} {} {} {}", nameOf(event.gesture), event.region.value_or("-"), event.phase,
                               event.frame, timeNs);
            loop.stop();
        },
        [&] { loop.stop(); });
    server->tell({.gesture = Gesture::HoldStart, .region = "VolumeUp", .phase = 1, .frame = 17}, 12'345'678'901);
    loop.run();
    EXPECT_EQ(seen, "holdStart VolumeUp 1 17 12345678901");
    EXPECT_EQ(replies.answered, 0U);

    properties.letSlowGo();
    processUntil(callers, [&] { return replies.answered == kAnswered; });
    EXPECT_EQ(replies.answered, kAnswered);
    EXPECT_EQ(replies.refused, kRefused);
    processUntil(std::span(&writer, 1), [&] { return written.answered == 1; });
    EXPECT_EQ(written.answered, 1U);
    EXPECT_NO_THROW(std::ignore = client().getProperty("Slow")) << "there is room again";
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
    EXPECT_EQ(properties.slowReads(), 1);
}

TEST_F(BusTest, CountersTellOfChanges) {
    const auto counted = [](const char* name, std::uint64_t count) {
        return makeRef<Dictionary>(
            std::vector<Dictionary::Entry>{{.key = name, .value = Number::withUnsignedLong(count)}});
    };
    const BusHandle raw = connection();
    Counters told;
    const auto read = [](sd_bus_message* signal, void* counters, sd_bus_error*) {
        sd_bus_message_skip(signal, "s");
        sd_bus_message_enter_container(signal, 'a', "{sv}");
        sd_bus_message_enter_container(signal, 'e', "sv");
        sd_bus_message_skip(signal, "s");
        sd_bus_message_enter_container(signal, 'v', "a{st}");
        *static_cast<Counters*>(counters) = readCounters(signal);
        return 0;
    };
    sd_bus_match_signal(raw.get(), nullptr, nullptr, kPath, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                        read, &told);
    std::ignore = client();
    properties.put("Pipeline.DebugInfo", counted("ResetCount", 2));
    properties.put("Pipeline.Algs.EventStats", makeRef<Dictionary>(std::vector<Dictionary::Entry>{
                                                   {.key = "Dispatched", .value = counted("numTaps", 3)}}));
    server->tell({.gesture = Gesture::Tap, .region = "PlayPause", .phase = 0, .frame = 1}, 1);
    process(raw.get(), kPatience, [&] { return told["events"] != 0; });
    EXPECT_THAT(told, ElementsAre(Pair("ResetCount", 2), Pair("events", 1), Pair("numTaps", 3),
                                  Pair("reports", testing::Ge(42U))));
    told.clear();
    process(raw.get(), 2500ms, [&] { return !told.empty(); });
    EXPECT_THAT(told, testing::IsEmpty()) << "reports alone";
}

TEST_F(BusTest, TheObjectSaysWhatItIs) {
    properties.put("Version", JSON::parse("[19,0,1]"));
    std::ignore = client();
    const BusHandle raw = connection();
    EXPECT_EQ(textOf(raw.get(), "Device"), kDevice);
    EXPECT_EQ(textOf(raw.get(), "Version"), "19.0.1");
    EXPECT_EQ(callAt(Bus::kObjects, raw.get(), "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", ""),
              "a{oa{sa{sv}}}");
}

TEST_F(BusTest, AWatchFailsWithTheBus) {
    Bus::Client watching = client();
    EventLoop loop;
    watching.watch(
        loop, [](const GestureEvent&, std::uint64_t) {}, [] { FAIL() << "the surface is still there"; });
    loop.addTimer(kPatience, [&] { loop.stop(); });
    bus.stop(SIGKILL);
    EXPECT_THROW(loop.run(), std::runtime_error);
}

TEST_F(BusTest, ABusThatComesBackFindsTheSurfaceAgain) {
    std::ignore = client();
    bus.stop();
    server->tell({.gesture = Gesture::Tap, .region = "PlayPause", .phase = 0, .frame = 1}, 1);
    EXPECT_EQ(refusal(""), "there is no bus: No such file or directory");
    std::this_thread::sleep_for(1500ms); // until it has seen that too
    server->tell({.gesture = Gesture::Tap, .region = "PlayPause", .phase = 0, .frame = 2}, 2);
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

TEST(EventLoopTest, ATimerGoesOnAtItsInterval) {
    constexpr auto kInterval = 100ms;
    EventLoop loop;
    int count = 0;
    std::chrono::steady_clock::time_point first;
    loop.addTimer(kInterval, [&] {
        if (++count == 1)
            first = std::chrono::steady_clock::now();
        else if (count == 4)
            loop.stop();
    });
    loop.addTimer(kPatience, [&] { loop.stop(); });
    loop.run();
    EXPECT_EQ(count, 4);
    EXPECT_GE(std::chrono::steady_clock::now() - first, 3 * kInterval);
}

TEST(EventLoopTest, BlocksRunInOrderUntilTheStopAndWhatTheyThrowIsPassedOn) {
    EventLoop loop;
    std::string order;
    loop.addTimer(1ms, [&] { order += 't'; });
    loop.post([&] {
        order += 'a';
        loop.post([&] { throw std::runtime_error(order); });
        std::this_thread::sleep_for(5ms);
    });
    std::thread([&] { loop.post([&] { order += 'b'; }); }).join();
    try {
        loop.run();
        FAIL() << "nothing was passed on";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), testing::StartsWith("ab"));
    }
    EventLoop stopped;
    stopped.post([&] { order = "the last"; });
    stopped.stop();
    stopped.run();
    EXPECT_EQ(order, "the last");
}

} // namespace
} // namespace VeltoTouch::Tests
