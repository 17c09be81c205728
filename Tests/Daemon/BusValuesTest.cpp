#include "Tests/Daemon/BusFixture.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace VeltoTouch::Tests {
namespace {

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
        {.sent =
             makeRef<String>("\uFFFD\uFDCF\uFDD0\uFDEF\uFDF0\uFFFE\uFFFF\U0001FFFD\U0001FFFE\U0010FFFF\xED\xA0\x80"),
         .received =
             makeRef<String>("\uFFFD\uFDCF\uFFFD\uFFFD\uFDF0\uFFFD\uFFFD\U0001FFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD")},
        {.sent = parsed(R"({"a\uFFFFb":"\uFDD0"})"), .received = parsed(R"({"a\uFFFDb":"\uFFFD"})")},
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
    constexpr std::size_t kMost = Bus::CallQueue::kLargestValue;
    Bus::Client client = this->client();
    const auto listOf = [](std::size_t count, const char* element) {
        return makeRef<Array>(std::vector<Ref<Value>>(count, JSON::parse(element)));
    };
    // Each thing takes 16 bytes beside its characters: the variant and what it holds, and so on inwards.
    constexpr std::size_t kText = kMost - 33, kData = kMost - 34, kNumbers = (kMost - 35) / 33,
                          kLists = (kMost - 35) / 35;
    const std::pair<Ref<Value>, Ref<Value>> rows[]{
        {makeRef<Data>(std::string(kData, 'x')), makeRef<Data>(std::string(kData + 1, 'x'))},
        {makeRef<String>(std::string(kText, 'x')), makeRef<String>(std::string(kText + 1, 'x'))},
        {listOf(kNumbers, "1"), listOf(kNumbers + 1, "1")},
        {listOf(kLists, "[]"), listOf(kLists + 1, "[]")},
    };
    for (const auto& [largest, tooLarge] : rows) {
        EXPECT_NO_THROW(client.setProperty("Key", *largest));
        EXPECT_THROW(client.setProperty("Key", *tooLarge), std::runtime_error);
    }

    const BusHandle raw = connection();
    sd_bus_message* nested = nullptr;
    sd_bus_message_new_method_call(raw.get(), &nested, "org.velto.Touch1", kPath, Bus::kInterface, "SetProperty");
    const BusMessage call(nested);
    sd_bus_message_append(nested, "s", "Key");
    sd_bus_message_open_container(nested, 'v', "av");
    sd_bus_message_open_container(nested, 'a', "v");
    for (std::size_t i = 0; i < kMost / 20; ++i)
        sd_bus_message_append(nested, "v", "v", "v", "v", "v", "v", "v", "v", "y", 7); // 25 bytes
    sd_bus_message_close_container(nested);
    sd_bus_message_close_container(nested);
    BusError error;
    sd_bus_call(raw.get(), nested, 0, error.get(), nullptr);
    ASSERT_TRUE(error.isSet());
    EXPECT_STREQ(error.get()->name, SD_BUS_ERROR_LIMITS_EXCEEDED) << "variants in one another count too";
}

TEST_F(BusTest, LargeAnswersThatNobodyReadsLeaveRoomForOthers) {
    constexpr std::size_t kLarge = 10'000'000;
    constexpr std::size_t kMost = Bus::CallQueue::kMostUnreadOfAll / kLarge;
    properties.put("Large", makeRef<Data>(std::string(kLarge, 'x')));
    properties.put("Key", makeRef<Null>());
    Bus::Client other = client();
    std::vector<BusHandle> silent(kMost + 3);
    std::ranges::generate(silent, connection);
    Replies replies, written;
    for (const BusHandle& caller : silent) {
        callSlowly(caller, "GetProperty", replies, "s", "Large");
        sd_bus_flush(caller.get());
    }
    std::ignore = other.getProperty("Key"); // which comes last
    for (std::size_t i = 0; i < Bus::CallQueue::kMostWithValues; ++i)
        callSlowly(silent.front(), "SetProperty", written, "sv", "Key", "u", 1);
    sd_bus_flush(silent.front().get());
    EXPECT_NO_THROW(other.setProperty("Key", Null())) << "the values of one that does not read give way";
    EXPECT_TRUE(happens(silent, [&] { return replies.answered == kMost; }));
    EXPECT_EQ(replies.refused, 3U);
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
    EXPECT_EQ(get("Broken"), SD_BUS_ERROR_FAILED);
    EXPECT_EQ(get("Nothing"), kUnknown);
    EXPECT_EQ(get(megabyte.c_str()), kInvalid);
    EXPECT_EQ(get(std::string(Bus::CallQueue::kLongestText, 'x').c_str()), kUnknown);
    EXPECT_EQ(get(std::string(Bus::CallQueue::kLongestText + 1, 'x').c_str()), kInvalid);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "Explode", "sss", "", "", ""), kInvalid) << "texts have a bound";
    EXPECT_EQ(get("Deeper"), kTooMuch);
    properties.put("Huge", makeRef<String>(std::string(Bus::kLargestSent / 3 + 1, '\0'))); // U+FFFD, three bytes
    EXPECT_EQ(get("Huge"), kTooMuch);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "GetProperty", "u", 1), kInvalid);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "GetProperty", ""), kInvalid);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "SetProperty", "ss", "Key", "x"), kInvalid);
    EXPECT_EQ(call(raw.get(), Bus::kInterface, "Explode", ""), SD_BUS_ERROR_UNKNOWN_METHOD);
    EXPECT_EQ(call(raw.get(), "org.freedesktop.DBus.Properties", "Set", "ssv", Bus::kInterface, "Device", "s", "x"),
              kInvalid);

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

} // namespace
} // namespace VeltoTouch::Tests
