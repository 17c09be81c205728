#include "Platform/JSON.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string quotedText(std::string_view string) {
    std::string text;
    JSON::appendString(text, string);
    return text;
}

TEST(JSONWritingTest, EachByteOutsideWellFormedUTF8BecomesAReplacementCharacter) {
    struct Row {
        const char* name;
        std::string string, written; // '*' stands for the replacement character
    };
    const Row rows[]{
        {"least and greatest of two bytes", "\xC2\x80\xDF\xBF", "\xC2\x80\xDF\xBF"},
        {"least and greatest of three", "\xE0\xA0\x80\xEF\xBF\xBF", "\xE0\xA0\x80\xEF\xBF\xBF"},
        {"least and greatest of four", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {"neighbours of the surrogates", "\xED\x9F\xBF\xEE\x80\x80", "\xED\x9F\xBF\xEE\x80\x80"},
        {"lone tails", "a\x80\xBF!", "a**!"},
        {"overlong of two", "\xC0\x80\xC1\xBF", "****"},
        {"overlong of three", "\xE0\x9F\xBF", "***"},
        {"overlong of four", "\xF0\x8F\xBF\xBF", "****"},
        {"surrogates", "\xED\xA0\x80\xED\xBF\xBF", "******"},
        {"truncated of two", "\xC3", "*"},
        {"truncated of three", "\xE2\x82", "**"},
        {"truncated of four", "\xF0\x9F\x98", "***"},
        {"broken off by a letter", "\xE2\x82\x41\xF0\x9F\x41", "**A**A"},
        {"broken off by another sequence", "\xE2\x82\xC3\xA9", "**\xC3\xA9"},
        {"just beyond U+10FFFF", "\xF4\x90\x80\x80", "****"},
        {"far beyond", "\xF5\x80\x80\x80\xFE\xFF", "******"},
    };
    for (const Row& row : rows) {
        std::string expected = "\"";
        for (const char c : row.written)
            expected += c == '*' ? "\xEF\xBF\xBD"s : std::string(1, c);
        EXPECT_EQ(quotedText(row.string), expected + '"') << row.name;
        EXPECT_TRUE(JSON::parse(quotedText(row.string))) << row.name;
    }
}

TEST(JSONWritingTest, QuotesBackslashesAndControlCharactersAreEscaped) {
    EXPECT_EQ(quotedText("\"\\/\b\f\n\r\t\0\x01\x1F \x7F"s), R"("\"\\/\b\f\n\r\t\u0000\u0001\u001f )"
                                                             "\x7F\"");
}

TEST(JSONWritingTest, ANumberIsWrittenAsWhatItWasMadeOf) {
    const std::pair<Number::Content, const char*> rows[]{
        {true, "true"},
        {std::int64_t{1}, "1"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"},
        {1.0F, "1.0"},
        {200.0, "200.0"},
    };
    for (const auto& [content, text] : rows)
        EXPECT_EQ(JSON::text(makeRef<Number>(content).get()), text);
}

TEST(JSONWritingTest, EveryFiniteDoubleReadsBackBitForBitAndAsADouble) {
    std::mt19937_64 random(20);
    for (int i = 0; i < 3000; ++i) {
        // Every third a whole number of any size, since those are the ones that could lose their point.
        const double number = i % 3 == 0 ? static_cast<double>(random() >> (i % 64)) : std::bit_cast<double>(random());
        if (!std::isfinite(number))
            continue;
        const std::string text = JSON::text(Number::withDouble(number).get());
        const auto readBack = JSON::parse(text);
        ASSERT_TRUE(as<Number>(readBack)) << text;
        const auto* const asDouble = std::get_if<double>(&as<Number>(readBack)->content());
        ASSERT_TRUE(asDouble) << text;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(*asDouble), std::bit_cast<std::uint64_t>(number)) << text;
    }
}

TEST(JSONWritingTest, WhatHasNoJSONFormSaysWhatItWas) {
    const std::pair<Ref<Value>, const char*> rows[]{
        {makeRef<Data>("\x01\x02"), R"([{"Unrepresentable":"data"}])"},
        {Number::withDouble(kInfinity), R"([{"Unrepresentable":"infinity"}])"},
        {Number::withFloat(-static_cast<float>(kInfinity)), R"([{"Unrepresentable":"-infinity"}])"},
        {Number::withDouble(std::nan("")), R"([{"Unrepresentable":"nan"}])"},
    };
    for (const auto& [value, text] : rows)
        EXPECT_EQ(JSON::text(makeRef<Array>(std::vector{value}).get()), text);
}

TEST(JSONWritingTest, NilIsNullAndTextIsAppended) {
    std::string text = "value=";
    JSON::append(text, nullptr);
    EXPECT_EQ(text, "value=null");
}

TEST(JSONDescriptionTest, IsIndentedAndNilReadsAsSuch) {
    EXPECT_EQ(JSON::description(nullptr), "(null)");
    EXPECT_EQ(JSON::description(JSON::parse(R"({"b":[1,{"x":null},[]],"a":{}})").get()), R"({
  "a": {},
  "b": [
    1,
    {
      "x": null
    },
    []
  ]
})");
}

} // namespace
} // namespace VeltoTouch::Tests
