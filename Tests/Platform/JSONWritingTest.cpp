#include "Platform/JSON.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;

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
        {"overlong of two, three and four", "\xC1\xBF \xE0\x9F\xBF \xF0\x8F\xBF\xBF", "** *** ****"},
        {"surrogates", "\xED\xA0\x80\xED\xBF\xBF", "******"},
        {"broken off by a letter", "\xC3\x41\xE2\x82\x41\xF0\x9F\x41", "*A**A**A"},
        {"broken off by the end", "\xF0\x9F\x98", "***"},
        {"bytes that need none", " /\x7F", " /\x7F"},
        {"broken off by another sequence", "\xE2\x82\xC3\xA9", "**\xC3\xA9"},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80 \xF5\x80\x80\x80\xFF", "**** *****"},
    };
    for (const Row& row : rows) {
        std::string expected = "\"";
        for (const char c : row.written)
            expected += c == '*' ? "\xEF\xBF\xBD"s : std::string(1, c);
        EXPECT_EQ(quotedText(row.string), expected + '"') << row.name;
    }
}

TEST(JSONWritingTest, ANumberIsWrittenAsWhatItWasMadeOfAndWhatHasNoJSONFormSaysWhatItWas) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const std::pair<Ref<Value>, const char*> rows[]{
        {nullptr, "null"},
        {Number::withBool(true), "true"},
        {Number::withLongLong(1), "1"},
        {Number::withFloat(1.0F), "1.0"},
        {makeRef<Data>("\x01\x02"), R"({"Unrepresentable":"data"})"},
        {Number::withDouble(kInfinity), R"({"Unrepresentable":"infinity"})"},
        {Number::withFloat(-static_cast<float>(kInfinity)), R"({"Unrepresentable":"-infinity"})"},
        {Number::withDouble(std::nan("")), R"({"Unrepresentable":"nan"})"},
    };
    for (const auto& [value, text] : rows)
        EXPECT_EQ(JSON::text(value.get()), text);
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
