#include "Platform/Value.h"

#include <limits>
#include <stdexcept>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

constexpr auto kMaxSigned = std::numeric_limits<std::int64_t>::max();
constexpr auto kMinSigned = std::numeric_limits<std::int64_t>::min();
constexpr auto kMaxUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kTwoTo63 = std::uint64_t{1} << 63U;
constexpr auto kInfinity = std::numeric_limits<float>::infinity();
constexpr auto kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(NumberTest, HasEveryReadingWhateverItWasMadeOf) {
    struct Row {
        const char* name;
        Number::Content content;
        std::int64_t asSigned;
        std::uint64_t asUnsigned;
        double asDouble;
        float asFloat;
        bool asBool;
    };
    // Halfway between two floats and one more; a first rounding to double would lose the one.
    constexpr std::uint64_t kAboveHalfway = 0x1000'0010'0000'0001;
    const Row rows[]{
        {"true", true, 1, 1, 1.0, 1.0F, true},
        {"signed -1", std::int64_t{-1}, -1, kMaxUnsigned, -1.0, -1.0F, true},
        {"unsigned 2^63", kTwoTo63, kMinSigned, kTwoTo63, 0x1p63, 0x1p63F, true},
        {"greatest unsigned", kMaxUnsigned, -1, kMaxUnsigned, 0x1p64, 0x1p64F, true},
        {"rounds once to float", kAboveHalfway, kAboveHalfway, kAboveHalfway, 0x1.000001p60, 0x1.000002p60F, true},
        {"float -2.75", -2.75F, -2, kMaxUnsigned - 1, -2.75, -2.75F, true},
        {"double -0.0", -0.0, 0, 0, 0.0, 0.0F, false},
        {"double 2^63", 0x1p63, kMaxSigned, kTwoTo63, 0x1p63, 0x1p63F, true},
        {"double 2^64", 0x1p64, kMaxSigned, kMaxUnsigned, 0x1p64, 0x1p64F, true},
        {"double -2^64", -0x1p64, kMinSigned, kTwoTo63, -0x1p64, -0x1p64F, true},
        {"infinity", kInfinity, kMaxSigned, kMaxUnsigned, std::numeric_limits<double>::infinity(), kInfinity, true},
        {"-infinity", -kInfinity, kMinSigned, kTwoTo63, -std::numeric_limits<double>::infinity(), -kInfinity, true},
        {"NaN", kNaN, 0, 0, std::numeric_limits<double>::quiet_NaN(), kNaN, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto number = makeRef<Number>(row.content);
        EXPECT_EQ(number->boolValue(), row.asBool);
        EXPECT_EQ(number->longLongValue(), row.asSigned);
        EXPECT_EQ(number->unsignedLongLongValue(), row.asUnsigned);
        EXPECT_THAT(number->floatValue(), testing::NanSensitiveFloatNear(row.asFloat, 0.0F));
        EXPECT_THAT(number->doubleValue(), testing::NanSensitiveDoubleNear(row.asDouble, 0.0));
    }
}

Ref<Value> number(Number::Content content) { return makeRef<Number>(content); }
Ref<Value> string(const char* text) { return makeRef<String>(text); }
Ref<Value> array(std::vector<Ref<Value>> elements) { return makeRef<Array>(std::move(elements)); }
Ref<Value> dictionary(std::vector<Dictionary::Entry> entries) { return makeRef<Dictionary>(std::move(entries)); }

TEST(ValueTest, EqualityComparesContent) {
    struct Row {
        const char* name;
        Ref<Value> a, b;
        bool equal;
    };
    const auto one = number(std::int64_t{1});
    const auto two = number(std::int64_t{2});
    const Row rows[]{
        {"signed and unsigned", one, number(std::uint64_t{1}), true},
        {"integer and a little more", one, number(1.5), false},
        {"float and double of the same text", number(0.1F), number(0.1), false},
        {"-1 and what it wraps to", number(std::int64_t{-1}), number(kMaxUnsigned), false},
        {"neighbours above 2^53", number(kMaxSigned), number(kMaxSigned - 1), false},
        {"string and data", string("a"), makeRef<Data>("a"), false},
        {"null and nil", makeRef<Null>(), nullptr, false},
        {"arrays", array({one, two}), array({number(1.0), two}), true},
        {"arrays by order", array({one, two}), array({two, one}), false},
        {"array and its beginning", array({one, two}), array({one}), false},
        {"dictionaries", dictionary({{"a", one}, {"b", two}}), dictionary({{"b", two}, {"a", one}}), true},
        {"dictionaries by key", dictionary({{"a", one}}), dictionary({{"b", one}}), false},
        {"dictionaries by value", dictionary({{"a", one}}), dictionary({{"a", two}}), false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CFEqual(row.a.get(), row.b.get()), row.equal) << row.name;
        EXPECT_EQ(CFEqual(row.b.get(), row.a.get()), row.equal) << row.name;
    }
}

TEST(ValueTest, DeeperThanAllowedIsRefusedByArraysAndDictionaries) {
    Ref<Value> value = array({string("leaf"), dictionary({{"a", array({})}, {"b", string("leaf")}})});
    EXPECT_EQ(value->depth(), 3U);
    while (value->depth() < Value::kDeepest)
        value = array({value, string("leaf")});
    EXPECT_THROW(array({value}), std::length_error);
    EXPECT_THROW(dictionary({{"a", value}}), std::length_error);
}

TEST(DictionaryTest, SortsKeysByTheirBytesAndKeepsTheLastOfEqualOnes) {
    std::vector<Dictionary::Entry> entries{{"\xC3\xA9", string("e acute")}, {"ba", string("longer")}};
    for (int i = 0; i < 100; ++i) // more than a sort keeps in order by chance
        entries.push_back({i % 2 == 0 ? "b" : "B", number(std::int64_t{i})});
    const auto sorted = makeRef<Dictionary>(std::move(entries));
    std::vector<std::string> keys;
    for (const auto& entry : sorted->entries())
        keys.push_back(entry.key);
    EXPECT_THAT(keys, testing::ElementsAre("B", "b", "ba", "\xC3\xA9"));
    EXPECT_EQ(as<Number>(sorted->find("B"))->longLongValue(), 99);
    EXPECT_EQ(as<Number>(sorted->find("b"))->longLongValue(), 98);
    for (const char* const missing : {"", "a", "bb", "baa", "\xC3"})
        EXPECT_EQ(sorted->find(missing), nullptr) << missing;
}

} // namespace
} // namespace VeltoTouch::Tests
