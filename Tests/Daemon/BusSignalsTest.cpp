#include "Tests/Daemon/BusFixture.h"

#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;

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
    server->tell({GestureKind::Tap, PixelRegion::PlayPause, 1, HostTime(1)});
    EXPECT_TRUE(happens(std::span(&raw, 1), [&] { return told["events"] != 0; }));
    EXPECT_THAT(told, ElementsAre(Pair("ResetCount", 2), Pair("events", 1), Pair("keys", 5), Pair("numTaps", 3),
                                  Pair("reports", testing::Ge(42U))));
    told.clear();
    EXPECT_FALSE(happens(
        std::span(&raw, 1), [&] { return !told.empty(); }, 2500ms))
        << "reports alone";
}

// A write that is done on its thread while the loop reloads is signalled after what the reload has written over it.
TEST_F(BusTest, TheLastSignalOfAPropertyHasTheValueThatHolds) {
    std::ignore = client();
    properties.setReload([&](Bus::TouchObject& object) {
        properties.letSlowGo();
        EXPECT_TRUE(eventually([&] { return properties.access().get(kSlowlyWritten) != nullptr; }));
        properties.put(kSlowlyWritten, Number::withUnsignedInt(0));
        object.signalProperty(kSlowlyWritten);
    });
    const BusHandle raw = connection();
    std::vector<std::uint64_t> signalled;
    const auto take = [](sd_bus_message* signal, void* values, sd_bus_error*) {
        sd_bus_message_skip(signal, "s");
        const Ref<Value> value = Bus::readVariant(signal, Bus::kAnySize);
        static_cast<std::vector<std::uint64_t>*>(values)->push_back(as<Number>(value)->unsignedLongLongValue());
        return 0;
    };
    sd_bus_match_signal(raw.get(), nullptr, nullptr, kPath, Bus::kInterface, "PropertyChanged", take, &signalled);
    Replies replies;
    callSlowly(raw, "SetProperty", replies, "sv", kSlowlyWritten, "u", 1);
    callSlowly(raw, "Reload", replies, "");
    EXPECT_TRUE(happens(std::span(&raw, 1), [&] { return signalled.size() == 2; }));
    EXPECT_EQ(replies.answered, 2U);
    EXPECT_EQ(signalled.back(), 0U);
}

} // namespace
} // namespace VeltoTouch::Tests
