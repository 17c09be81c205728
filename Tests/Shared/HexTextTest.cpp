#include "Shared/Util.h"

#include <locale>
#include <numeric>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

using Bytes = std::vector<std::uint8_t>;

// The bytes of `text`; empty where it is refused.
std::optional<Bytes> bytesOrRefused(std::string_view text) {
    try {
        return Util::bytesFromHexString(text);
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "invalid hex string");
        return std::nullopt;
    }
}

TEST(HexTextTest, IsReadAsAStreamOfNumbers) {
    const std::pair<std::string_view, std::optional<Bytes>> rows[]{
        {"", Bytes{}},
        {"0a ff 10", Bytes{0x0A, 0xFF, 0x10}},
        {" 0a  ff   10  ", Bytes{0x0A, 0xFF, 0x10}},
        {"0A\tFF\n10", Bytes{0x0A, 0xFF, 0x10}},
        {"0x0a 0Xff", Bytes{0x0A, 0xFF}},
        {"0a f", Bytes{0x0A, 0x0F}},
        {"00ff 0", Bytes{0xFF, 0x00}},
        {"+0a", Bytes{0x0A}},
        {"-ff01", Bytes{0xFF}},
        {"0a0x0b", Bytes{0xA0}},
        {"0a zz ff", Bytes{0x0A}},
        {"0a fg ff ", Bytes{0x0A, 0x0F}},
        {"0a,ff ", Bytes{0x0A}},
        {"0a ff 10000 ff", Bytes{0x0A, 0xFF}},
        {"0a 0x", Bytes{0x0A}},
        {"-1", std::nullopt},
        {"abcd", std::nullopt},
        {"0a 100 ff", std::nullopt},
        {"0a ff0 ", std::nullopt},
    };
    for (const auto& [text, bytes] : rows)
        EXPECT_EQ(bytesOrRefused(text), bytes) << '"' << text << '"';
}

// What the stream itself makes of `text`.
std::optional<Bytes> bytesOfPlainStream(const std::string& text) {
    std::istringstream stream(text);
    Bytes bytes;
    while (true) {
        std::uint16_t number = 0;
        stream >> std::hex >> number;
        if (stream.fail())
            return bytes;
        if (number >= 0x100)
            return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(number));
    }
}

TEST(HexTextTest, EveryTextReadsAsTheStreamReadsItWellFormedOrNot) {
    std::mt19937 random(11);
    const auto pick = [&random](std::string_view from) { return from[random() % from.size()]; };
    for (int i = 0; i < 5000; ++i) {
        std::string text;
        for (auto pairs = random() % 8; pairs > 0; --pairs)
            text.append(1, pick("0123456789abcdefABCDEF")).append(1, pick("0123456789abcdef")).append(1, ' ');
        // Up to three of its characters are changed, inserted or taken out; a quarter of the texts stays as it is.
        for (auto changes = random() % 4; changes > 0; --changes) {
            const std::size_t place = random() % (text.size() + 1);
            text.replace(place, random() % 2, random() % 2, pick("0019afAFgxX+-, \t\n\r\v\f\xA0"));
        }
        ASSERT_EQ(bytesOrRefused(text), bytesOfPlainStream(text)) << '"' << text << '"';
    }
}

TEST(HexTextTest, EveryByteIsTwoLowerCaseDigitsAndABlankAndReadsBack) {
    EXPECT_EQ(Util::hexStringFromBytes({}), "");
    EXPECT_EQ(Util::hexStringFromBytes(Bytes{0x00}), "00 ");
    EXPECT_EQ(Util::hexStringFromBytes(Bytes{0x0A, 0xFF, 0x10}), "0a ff 10 ");

    Bytes all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    std::string text = "bytes: ";
    Util::appendHexString(text, all);
    EXPECT_EQ(text.size(), 7 + 3 * all.size());
    EXPECT_EQ(Util::bytesFromHexString(text.substr(7)), all);
}

TEST(HexTextTest, DoesNotDependOnTheLocale) {
    struct Grouping : std::numpunct<char> {
        [[nodiscard]] char do_thousands_sep() const override { return ','; }
        [[nodiscard]] std::string do_grouping() const override { return "\2"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const Bytes bytes = Util::bytesFromHexString("0a 0,ff");
    std::locale::global(before);
    EXPECT_THAT(bytes, ElementsAre(0x0A, 0x00));
}

} // namespace
} // namespace VeltoTouch::Tests
