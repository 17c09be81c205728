#include "Platform/JSON.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

std::string nested(std::size_t levels, const std::string& opening, const std::string& inner, char closing) {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i)
        text += opening;
    return text.append(inner).append(levels, closing);
}

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
}

TEST(JSONReadingTest, OfEqualKeysTheLastCounts) {
    EXPECT_EQ(JSON::text(JSON::parse(R"({"a":1,"b":2,"\u0061":3,"a":null})").get()), R"({"a":null,"b":2})");
}

TEST(JSONReadingTest, WhatIsNoJSONIsNil) {
    const std::pair<const char*, std::string> rows[]{
        {"nothing", ""},
        {"blanks", "  \n"},
        {"word", "nul"},
        {"not a number", "NaN"},
        {"leading zero", "01"},
        {"two values", "1 2"},
        {"unfinished object", R"({"a":1)"},
        {"unfinished string", R"(["a)"},
        {"comma at the end", "[1,]"},
        {"number as key", "{1:2}"},
        {"control character in a string", "\"a\nb\""},
        {"unknown escape", R"("\x41")"},
        {"2^64", "18446744073709551616"},
        {"below -2^63", "-9223372036854775809"},
        {"beyond double", "1e400"},
        {"overlong UTF-8", "\"\xC0\xAF\""},
        {"surrogate in UTF-8", "\"\xED\xA0\x80\""},
        {"UTF-8 beyond Unicode", "\"\xF4\x90\x80\x80\""},
        {"truncated UTF-8", "\"\xE2\x82\""},
        {"lone tail in a key", "{\"\x80\":1}"},
    };
    for (const auto& [name, text] : rows)
        EXPECT_EQ(JSON::parse(text), nullptr) << name;
}

TEST(JSONReadingTest, NestingIsBounded) {
    EXPECT_TRUE(JSON::parse(nested(1024, "[", "", ']')));
    EXPECT_TRUE(JSON::parse(nested(1023, R"({"a":)", "1", '}')));
    for (const std::size_t levels : {std::size_t{1025}, std::size_t{200'000}}) {
        EXPECT_EQ(JSON::parse(nested(levels, "[", "", ']')), nullptr) << levels;
        EXPECT_EQ(JSON::parse(nested(levels, R"({"a":)", "1", '}')), nullptr) << levels;
        EXPECT_EQ(JSON::parse(std::string(levels, '[')), nullptr) << levels;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
