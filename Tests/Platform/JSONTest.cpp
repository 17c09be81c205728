#include "Platform/JSON.h"

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

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

TEST(JSONReadingTest, SpaceEscapesAndKeyOrderDoNotMatterAndOfEqualKeysTheLastCounts) {
    EXPECT_EQ(JSON::text(JSON::parse(" { \"b\" : [ 1 , 2.50 ] ,\r\n\t\"\\u0061\" : \"\\ud83d\\ude00\\/\" } ").get()),
              "{\"a\":\"\xF0\x9F\x98\x80/\",\"b\":[1,2.5]}");
    EXPECT_EQ(JSON::text(JSON::parse(R"({"a":1,"b":2,"\u0061":3,"a":null})").get()), R"({"a":null,"b":2})");
}

TEST(JSONReadingTest, WhatIsNoJSONIsNilAndNestingIsBounded) {
    const auto arrays = [](std::size_t levels) { return std::string(levels, '[').append(levels, ']'); };
    const auto objects = [](std::size_t levels) {
        std::string text;
        for (std::size_t i = 0; i < levels; ++i)
            text += R"({"a":)";
        return text + "1" + std::string(levels, '}');
    };
    EXPECT_TRUE(JSON::parse(arrays(1024)));
    EXPECT_TRUE(JSON::parse(objects(1023)));
    const std::pair<const char*, std::string> rows[]{
        {"comma at the end", "[1,]"},
        {"control character in a string", "\"a\nb\""},
        {"below -2^63", "-9223372036854775809"},
        {"beyond double", "1e400"},
        {"surrogate in UTF-8", "\"\xED\xA0\x80\""},
        {"lone tail in a key", "{\"\x80\":1}"},
        {"arrays too deep", arrays(1025)},
        {"objects too deep", objects(1024)},
        {"no room on any stack", arrays(200'000)},
        {"only beginnings", std::string(200'000, '[')},
    };
    for (const auto& [name, text] : rows)
        EXPECT_EQ(JSON::parse(text), nullptr) << name;
}

// A document and the data that it was parsed from.
struct Parsed {
    explicit Parsed(std::string text) : document(*makeRef<Data>(std::move(text))) {}
    [[nodiscard]] JSON::Element root() const { return document.root(); }
    [[nodiscard]] JSON::Element member(std::string_view name) const { return root().members(std::array{name})[0]; }

    JSON::Document document;
};

std::vector<std::string> textsOf(const JSON::Element& list) {
    std::vector<std::string> texts;
    for (const JSON::Element element : list.elements())
        texts.push_back(JSON::text(element.value().get()));
    return texts;
}

TEST(JSONElementTest, AnAbsentElementAnswersNoAndANullOneIsThere) {
    const Parsed withNull(R"({"null":null})");
    const Parsed noJSON("{");
    EXPECT_TRUE(as<Null>(withNull.member("null").value()));
    for (const JSON::Element& absent : {withNull.member("nul"), noJSON.root(), noJSON.member("a")}) {
        EXPECT_FALSE(absent.isPresent() || absent.isDictionary() || absent.isArray());
        EXPECT_FALSE(absent.string() || absent.unsignedNumber() || absent.value());
        EXPECT_THAT(textsOf(absent), ElementsAre());
    }
}

TEST(JSONElementTest, MembersComeInTheOrderAskedForAndTheLastOfEqualKeysCounts) {
    const Parsed parsed(R"({"b":{"a":7},"a":1,"c":[8],"\u0061":18446744073709551615,"A":9})");
    const auto [c, missing, a] = parsed.root().members<3>({"c", "d", "a"});
    EXPECT_TRUE(c.isArray());
    EXPECT_FALSE(missing.isPresent());
    EXPECT_EQ(a.unsignedNumber(), 18446744073709551615U);
}

TEST(JSONElementTest, ElementsOfAnArrayComeWholeAndInOrder) {
    EXPECT_THAT(textsOf(Parsed(R"([[1,[2]],{"a":[3]},"x\n",0.5,null,[]])").root()),
                ElementsAre("[1,[2]]", R"({"a":[3]})", R"("x\n")", "0.5", "null", "[]"));
    EXPECT_THAT(textsOf(Parsed(R"({"a":1})").root()), ElementsAre());
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

TEST(JSONWritingTest, ADescriptionIsIndentedAndNilReadsAsSuch) {
    EXPECT_EQ(JSON::description(nullptr), "(null)");
    EXPECT_EQ(JSON::description(JSON::parse(R"({"b":[1,{"x":null},[]],"a":{}})").get()),
              "{\n  \"a\": {},\n  \"b\": [\n    1,\n    {\n      \"x\": null\n    },\n    []\n  ]\n}");
}

} // namespace
} // namespace VeltoTouch::Tests
