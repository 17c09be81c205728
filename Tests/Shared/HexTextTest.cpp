#include "Shared/Util.h"

#include <locale>
#include <numeric>
#include <optional>
#include <stdexcept>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

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
        {" 0a  ff\t10\n", Bytes{0x0A, 0xFF, 0x10}},
        {"0x0a 0Xff", Bytes{0x0A, 0xFF}},
        {"00ff 0", Bytes{0xFF, 0x00}},
        {"-ff01", Bytes{0xFF}},
        {"0a0x0b", Bytes{0xA0}},
        {"0a,ff ", Bytes{0x0A}},
        {"0A FF", Bytes{0x0A, 0xFF}},
        {"0a g0 ff ", Bytes{0x0A}},
        {"0a fg ff ", Bytes{0x0A, 0x0F}},
        {"0a ff 10000 ff", Bytes{0x0A, 0xFF}},
        {"0a 0x", Bytes{0x0A}},
        {"-1", std::nullopt},
        {"abcd", std::nullopt},
        {"0a 100 ff", std::nullopt},
    };
    for (const auto& [text, bytes] : rows)
        EXPECT_EQ(bytesOrRefused(text), bytes) << '"' << text << '"';
}

TEST(HexTextTest, EveryByteIsTwoLowerCaseDigitsAndABlankAndReadsBack) {
    EXPECT_EQ(Util::hexStringFromBytes(Bytes{0x0A, 0xFF, 0x10}), "0a ff 10 ");
    Bytes all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    std::string text = "bytes: ";
    Util::appendHexString(text, all);
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
    EXPECT_EQ(bytes, (Bytes{0x0A, 0x00}));
}

} // namespace
} // namespace VeltoTouch::Tests
