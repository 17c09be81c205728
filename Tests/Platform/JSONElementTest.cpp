#include "Platform/JSON.h"

#include <limits>
#include <string>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::Optional;

constexpr auto kMaxUnsigned = std::numeric_limits<std::uint64_t>::max();

// A document and the data that it was parsed from.
struct Parsed {
    explicit Parsed(std::string text) : document(*makeRef<Data>(std::move(text))) {}
    [[nodiscard]] JSON::Element root() const { return document.root(); }
    [[nodiscard]] JSON::Element member(std::string_view name) const { return root().members(std::array{name})[0]; }

    JSON::Document document;
};

TEST(JSONElementTest, AnAbsentMemberIsNilAndANullOneIsAValue) {
    const Parsed parsed(R"({"null":null})");
    EXPECT_TRUE(parsed.member("null").isPresent());
    EXPECT_TRUE(as<Null>(parsed.member("null").value()));
    EXPECT_FALSE(parsed.member("nul").isPresent());
    EXPECT_FALSE(parsed.member("nul").value());
}

TEST(JSONElementTest, TextThatIsNoJSONHasAnAbsentRoot) {
    const Parsed parsed("{");
    EXPECT_FALSE(parsed.root().isPresent());
    EXPECT_FALSE(parsed.root().isDictionary() || parsed.root().isArray());
    EXPECT_FALSE(parsed.root().string());
    EXPECT_FALSE(parsed.root().unsignedNumber());
    EXPECT_FALSE(parsed.root().value());
    EXPECT_FALSE(parsed.member("a").isPresent());
    EXPECT_FALSE(parsed.root().elements().begin() != parsed.root().elements().end());
}

TEST(JSONElementTest, UnsignedReadingOfEachKind) {
    const std::pair<const char*, std::optional<std::uint64_t>> rows[]{
        {"0", 0},
        {"18446744073709551615", kMaxUnsigned},
        {"-1", kMaxUnsigned},
        {"3.9", 3},
        {"1e30", kMaxUnsigned},
        {"true", std::nullopt},
        {"null", std::nullopt},
        {R"("5")", std::nullopt},
        {"[5]", std::nullopt},
    };
    for (const auto& [text, reading] : rows)
        EXPECT_EQ(Parsed(text).root().unsignedNumber(), reading) << text;
}

TEST(JSONElementTest, StringsAreUnescapedAndNothingElseIsAString) {
    EXPECT_THAT(Parsed(R"("a\u0000\n")").root().string(), Optional(std::string_view("a\0\n", 3)));
    for (const char* const text : {"1", "null", R"(["a"])", R"({"a":"a"})"})
        EXPECT_FALSE(Parsed(text).root().string()) << text;
}

TEST(JSONElementTest, MembersComeInTheOrderAskedForAndTheLastOfEqualKeysCounts) {
    const Parsed parsed(R"({"b":{"a":7},"a":1,"c":[8],"\u0061":2,"A":9})");
    const auto [c, missing, a] = parsed.root().members<3>({"c", "d", "a"});
    EXPECT_TRUE(c.isArray());
    EXPECT_FALSE(missing.isPresent());
    EXPECT_THAT(a.unsignedNumber(), Optional(2U));
    for (const char* const text : {R"([{"a":1}])", R"("a")", "1", "null"}) // none of them has members
        EXPECT_FALSE(Parsed(text).member("a").isPresent()) << text;
}

std::vector<std::string> textsOf(const JSON::Element& list) {
    std::vector<std::string> texts;
    for (const JSON::Element element : list.elements())
        texts.push_back(JSON::text(element.value().get()));
    return texts;
}

TEST(JSONElementTest, ElementsOfAnArrayComeWholeAndInOrder) {
    EXPECT_THAT(
        textsOf(Parsed(R"([[1,[2]],{"a":[3]},"x",18446744073709551615,-1,0.5,true,null,[]])").root()),
        ElementsAre("[1,[2]]", R"({"a":[3]})", R"("x")", "18446744073709551615", "-1", "0.5", "true", "null", "[]"));
    for (const char* const text : {"[]", R"({"a":1})", R"("ab")", "1", "null"})
        EXPECT_THAT(textsOf(Parsed(text).root()), ElementsAre()) << text;
}

} // namespace
} // namespace VeltoTouch::Tests
