#include "Platform/JSON.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

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

TEST(JSONReadingTest, WhatIsNoJSONIsNil) {
    const std::pair<const char*, std::string> rows[]{
        {"comma at the end", "[1,]"},
        {"control character in a string", "\"a\nb\""},
        {"below -2^63", "-9223372036854775809"},
        {"beyond double", "1e400"},
        {"surrogate in UTF-8", "\"\xED\xA0\x80\""},
        {"lone tail in a key", "{\"\x80\":1}"},
    };
    for (const auto& [name, text] : rows)
        EXPECT_EQ(JSON::parse(text), nullptr) << name;
}

TEST(JSONReadingTest, NestingIsBounded) {
    const auto arrays = [](std::size_t levels) { return std::string(levels, '[').append(levels, ']'); };
    const auto objects = [](std::size_t levels) {
        std::string text = "1";
        for (std::size_t i = 0; i < levels; ++i)
            text = R"({"a":)" + text + '}';
        return text;
    };
    EXPECT_TRUE(JSON::parse(arrays(1024)));
    EXPECT_TRUE(JSON::parse(objects(1023)));
    for (const std::string& tooDeep : {arrays(1025), objects(1024), arrays(200'000), std::string(200'000, '[')})
        EXPECT_EQ(JSON::parse(tooDeep), nullptr) << tooDeep.size();
}

} // namespace
} // namespace VeltoTouch::Tests
