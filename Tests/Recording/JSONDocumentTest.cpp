#include "Plugin/Recording/JSONDocument.h"

#include "Platform/JSON.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

// A document and the data that it was parsed from.
struct Parsed {
    explicit Parsed(std::string text) : document(*makeRef<Data>(std::move(text))) {}
    [[nodiscard]] JSON::Element root() const { return document.root(); }
    [[nodiscard]] JSON::Element member(std::string_view name) const { return root().members(std::array{name})[0]; }

    JSON::Document document;
};

std::vector<std::string> elementTexts(const JSON::Element& list) {
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
        EXPECT_THAT(elementTexts(absent), ElementsAre());
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
    EXPECT_THAT(elementTexts(Parsed(R"([[1,[2]],{"a":[3]},"x\n",0.5,null,[]])").root()),
                ElementsAre("[1,[2]]", R"({"a":[3]})", R"("x\n")", "0.5", "null", "[]"));
    EXPECT_THAT(elementTexts(Parsed(R"({"a":1})").root()), ElementsAre());
}

} // namespace
} // namespace VeltoTouch::Tests
