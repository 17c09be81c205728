#pragma once

#include "Platform/JSON.h"
#include "Tests/Support/PrivateBus.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Daemon/Bus/TouchObject.h"
#include "Velto/Daemon/EventLoop.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <latch>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>

// A surface on a message bus of a test's own, and callers of it.

namespace VeltoTouch::Tests {

inline constexpr std::chrono::seconds kPatience{20};
inline constexpr const char* kDevice = "/dev/hidraw7";
inline constexpr const char* kSlowlyWritten = "Pipeline.Algs.EnableHoldSuppression";
inline constexpr const char* kPath = "/org/velto/Touch1/hidraw7";

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
    // Reading "Slow", and writing kSlowlyWritten, takes until it is let go.
    void letSlowGo() {
        const std::lock_guard guard(_lock);
        _isSlow = false;
        _changed.notify_all();
    }

    void waitForASlowRead() {
        std::unique_lock guard(_lock);
        _changed.wait_for(guard, kPatience, [&] { return _reads["Slow"] > 0; });
    }
    using Reload = std::function<void(Bus::TouchObject& object)>; // on the loop's thread
    void setReload(Reload reload) {
        const std::lock_guard guard(_lock);
        _reload = std::move(reload);
    }
    void reload(Bus::TouchObject& object) {
        put("Reloaded", makeRef<Null>());
        _lock.lock();
        const Reload reload = _reload;
        _lock.unlock();
        reload(object);
    }

    [[nodiscard]] int readsOf(const std::string& key) {
        const std::lock_guard guard(_lock);
        return _reads[key];
    }

private:
    Ref<Value> get(const std::string& key) {
        std::unique_lock guard(_lock);
        ++_reads[key];
        if (key == "Broken")
            throw std::runtime_error("broken");
        if (key == "Slow") {
            _changed.notify_all();
            _changed.wait(guard, [&] { return !_isSlow; });
        }
        const auto found = _values.find(key);
        return found == _values.end() ? nullptr : found->second;
    }
    bool set(const std::string& key, const Ref<Value>& value) {
        if (key == "ReadOnly")
            return false;
        if (key == kSlowlyWritten) {
            std::unique_lock guard(_lock);
            _changed.wait(guard, [&] { return !_isSlow; });
        }
        put(key, value);
        return true;
    }

    std::mutex _lock;
    std::condition_variable _changed;
    bool _isSlow = true;
    Reload _reload = [](Bus::TouchObject&) {};
    std::map<std::string, int> _reads;
    std::map<std::string, Ref<Value>> _values{{"Slow", makeRef<Null>()}};
};

// A program that serves a surface, on a thread. Several are made one after the other: objects of several threads share
// the keys of the bus library's tables, which no lock guards.
class Server {
public:
    Server(Properties& properties, const char* device)
        : _thread([this, &properties, device] {
              Bus::TouchObject object(_loop, Bus::Which::System,
                                      {.device = device,
                                       .configuration = "/etc/somewhere",
                                       .keyboard = [] { return "/dev/input/event9"; },
                                       .pressedKeys = [] { return 5U; },
                                       .properties = properties.access(),
                                       .deliveredReports = [reports = 42U]() mutable { return reports++; },
                                       .keys =
                                           [] {
                                               return std::map<std::string, std::string>{{"keys.a", "KEY_B"}};
                                           },
                                       .sources = [&properties] { return properties.access().get("Sources"); },
                                       .reload = [this, &properties] { properties.reload(*_object); }});
              _object = &object;
              _isMade.count_down();
              _loop.run();
          }) {
        _isMade.wait();
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        _loop.stop();
        _thread.join();
    }

    void tell(const Gesture& gesture) {
        _loop.post([this, gesture] { _object->signalGesture(gesture); });
    }

private:
    EventLoop _loop;
    Bus::TouchObject* _object = nullptr;
    std::latch _isMade{1};
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

    // A connection for what no client of ours would say. Its calls wait for as long as a busy machine takes.
    [[nodiscard]] static BusHandle connection() {
        BusHandle connection = madeBy<BusHandle>(sd_bus_open_system, "bus");
        sd_bus_set_method_call_timeout(connection.get(), 120'000'000);
        return connection;
    }

    struct Replies {
        std::size_t answered = 0;
        std::size_t refused = 0; // as too many
    };
    // Calls a method of the object; the reply is counted when it comes: see `happens`.
    template <class... Arguments>
    static void callSlowly(const BusHandle& connection, const char* method, Replies& replies, const char* types,
                           Arguments... arguments) {
        callSlowly(connection, Bus::kInterface, method, replies, types, arguments...);
    }
    template <class... Arguments>
    static void callSlowly(const BusHandle& connection, const char* interface, const char* method, Replies& replies,
                           const char* types, Arguments... arguments) {
        const auto count = [](sd_bus_message* reply, void* data, sd_bus_error*) {
            auto& counted = *static_cast<Replies*>(data);
            ++(sd_bus_message_is_method_error(reply, SD_BUS_ERROR_LIMITS_EXCEEDED) > 0 ? counted.refused
                                                                                       : counted.answered);
            return 0;
        };
        sd_bus_call_method_async(connection.get(), nullptr, "org.velto.Touch1", kPath, interface, method, count,
                                 &replies, types, arguments...);
    }
    // Lets the connections' handlers be called; whether something comes true before long.
    [[nodiscard]] static bool happens(std::span<const BusHandle> connections, const std::function<bool()>& isTrue,
                                      std::chrono::milliseconds patience = kPatience) {
        for (const auto deadline = std::chrono::steady_clock::now() + patience; !isTrue();) {
            if (std::chrono::steady_clock::now() > deadline)
                return false;
            for (const BusHandle& connection : connections) {
                while (sd_bus_process(connection.get(), nullptr) > 0) {
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    // Whether the bus has taken all that was written to it.
    [[nodiscard]] static bool isTaken(const BusHandle& connection) {
        int bytes = 0;
        return ::ioctl(sd_bus_get_fd(connection.get()), SIOCOUTQ, &bytes) == 0 && bytes == 0;
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
        if (error.isSet())
            return error.get()->name;
        return reply == nullptr ? "" : sd_bus_message_get_signature(reply, 1);
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
};

} // namespace VeltoTouch::Tests
