#include "Platform/JSON.h"
#include "Platform/JSONExaminer.h"

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;

TEST(JSONReadingTest, CompactTextReadsAndWritesBackTheSame) {
    std::istringstream texts(R"(
        null true false 0 -1 9223372036854775807 9223372036854775808 18446744073709551615
        9007199254740993 -9007199254740993 -9223372036854775808
        200.0 -0.0 0.1 1e+22 1e+23 5e-324 1.7976931348623157e+308
        "" "\"\\/\b\f\n\r\t\u0000\u001f" "é€😀"
        [] {} [[],{}] {"":[1,{"b":null}],"A":true,"a":"x"})");
    for (std::string text; texts >> text;)
        EXPECT_EQ(JSON::text(JSON::parse(text).get()), text);
}

TEST(JSONReadingTest, SpaceEscapesAndKeyOrderDoNotMatter) {
    EXPECT_EQ(JSON::text(JSON::parse(" { \"b\" : [ 1 , 2.50 ] ,\r\n\t\"\\u0061\" : \"\\ud83d\\ude00\\/\" } ").get()),
              "{\"a\":\"\xF0\x9F\x98\x80/\",\"b\":[1,2.5]}");
    EXPECT_EQ(JSON::text(JSON::parse(R"({"a":1,"b":2,"\u0061":3,"a":null})").get()), R"({"a":null,"b":2})");
}

// Ties are to even.
TEST(JSONReadingTest, AnIntegerBeyond64BitsIsTheNearestDouble) {
    EXPECT_EQ(JSON::text(JSON::parse(R"( [ 18446744073709551616, -9223372036854775809 ,18446744073709553664,
        18446744073709553665, 18446744073709557760, {"18446744073709551616" : 123456789012345678901234567890},
        "18446744073709551616\"18446744073709551616", 18446744073709551616.5, 18446744073709551615] )")
                             .get()),
              "[18446744073709551616.0,-9223372036854775808.0,18446744073709551616.0,18446744073709555712.0,"
              "18446744073709559808.0,{\"18446744073709551616\":1.2345678901234568e+29},"
              R"("18446744073709551616\"18446744073709551616",18446744073709551616.0,18446744073709551615])");
}

TEST(JSONReadingTest, WhatIsNoJSONIsNilWithItsFirstFault) {
    const auto arrays = [](std::size_t levels) { return std::string(levels, '[').append(levels, ']'); };
    const auto objects = [](std::size_t levels) {
        std::string text;
        for (std::size_t i = 0; i < levels; ++i)
            text += R"({"a":)";
        return text + "1" + std::string(levels, '}');
    };
    EXPECT_TRUE(JSON::parse(arrays(1024)));
    EXPECT_TRUE(JSON::parse(objects(1023)));
    struct Row {
        std::string text;
        std::size_t byte;
        const char* cause;
    };
    const Row rows[]{
        {"", 0, "the text ends too early"},
        {" \n", 2, "the text ends too early"},
        {"\xEF\xBB\xBF[]", 0, "expected a value"},
        {"[1,]", 3, "expected a value"},
        {"[] ,", 3, "expected the end of the text"},
        {"[]\0"s, 2, "expected the end of the text"},
        {"[1 2]", 3, "expected ',' or ']'"},
        {"{\"a\":{}]", 7, "expected ',' or '}'"},
        {"{\"a\" 1}", 5, "expected ':'"},
        {"{\"a\":1,}", 7, "expected a name in quotes"},
        {"{a:1}", 1, "expected a name in quotes"},
        {"[nul]", 4, "expected true, false or null"},
        {"[truth]", 4, "expected true, false or null"},
        {"[1,-]", 4, "expected a digit"},
        {"[1.e5]", 3, "expected a digit"},
        {"[1e+]", 4, "expected a digit"},
        {"[01]", 2, "expected ',' or ']'"},
        {"[0,1e400,", 3, "number too large"},
        {"-1" + std::string(400, '0'), 0, "number too large"},
        {"[123456789012345678901234567890,}", 32, "expected a value"},
        {"\"a\nb\"", 2, "control character in a string"},
        {"\"\xED\xA0\x80\"", 1, "invalid UTF-8 in a string"},
        {"{\"\x80\":1}", 2, "invalid UTF-8 in a string"},
        {R"(["\x"])", 3, "unknown escape in a string"},
        {R"(["\u12g4"])", 6, "expected a hexadecimal digit"},
        {R"(["a\ud83dx"])", 3, "half of a surrogate pair in a string"},
        {R"(["a\ud83d\n"])", 3, "half of a surrogate pair in a string"},
        {R"(["a\ud83d\ud83d"])", 3, "half of a surrogate pair in a string"},
        {R"(["a\ude00"])", 3, "half of a surrogate pair in a string"},
        {arrays(1025), 1024, "nested too deep"},
        {objects(1024), 5 * 1024, "nested too deep"},
        {std::string(200'000, '['), 1024, "nested too deep"},
    };
    for (const auto& [text, byte, cause] : rows) {
        SCOPED_TRACE(text.substr(0, 100));
        EXPECT_EQ(JSON::parse(text), nullptr);
        const std::optional<JSON::Fault> fault = JSON::examine(text).fault;
        ASSERT_TRUE(fault);
        EXPECT_EQ(fault->byte, byte);
        EXPECT_STREQ(fault->cause, cause);
    }
}

TEST(JSONReadingTest, ATextThatIsCutOffIsFaultyAtItsEnd) {
    const std::string whole =
        R"( {"a\\":[-1.5e+3,0,"\ud83d\ude00\n",123456789012345678901] ,"b":{"":null,"c":[]},"d":true})";
    ASSERT_TRUE(JSON::parse(whole));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::optional<JSON::Fault> fault = JSON::examine(whole.substr(0, size)).fault;
        ASSERT_TRUE(fault);
        EXPECT_EQ(fault->byte, size);
        EXPECT_THAT(fault->cause, testing::StartsWith("the text ends "));
    }
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
        std::string text;
        JSON::appendString(text, row.string);
        EXPECT_EQ(text, expected + '"') << row.name;
    }
}

TEST(JSONWritingTest, NumbersKeepTheirKindAndWhatHasNoFormSaysSo) {
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

TEST(JSONWritingTest, ADescriptionIsIndentedAndNilReadsAsSuch) {
    EXPECT_EQ(JSON::description(nullptr), "(null)");
    EXPECT_EQ(JSON::description(JSON::parse(R"({"b":[1,{"x":null},[]],"a":{}})").get()),
              "{\n  \"a\": {},\n  \"b\": [\n    1,\n    {\n      \"x\": null\n    },\n    []\n  ]\n}");
}

} // namespace
} // namespace VeltoTouch::Tests
