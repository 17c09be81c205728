#include "Plugin/Shared/ClockConversion.h"
#include "Plugin/Shared/HexText.h"
#include "Plugin/Shared/ImageText.h"
#include "Plugin/Shared/KeyDomain.h"

#include <limits>
#include <locale>
#include <numeric>
#include <optional>
#include <span>
#include <stdexcept>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The bytes of `text`; none where it is refused.
std::optional<Bytes> bytesOrRefused(std::string_view text) {
    try {
        return Util::bytesFromHexString(text);
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "invalid hex string");
        return std::nullopt;
    }
}

TEST(HexTextTest, IsReadAsAStreamOfNumbers) {
    for (const auto& [text, bytes] : std::initializer_list<std::pair<std::string_view, std::optional<Bytes>>>{
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
             {"0a 100 ff", std::nullopt}})
        EXPECT_EQ(bytesOrRefused(text), bytes) << '"' << text << '"';

    struct Grouping : std::numpunct<char> {
        [[nodiscard]] char do_thousands_sep() const override { return ','; }
        [[nodiscard]] std::string do_grouping() const override { return "\2"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const Bytes bytes = Util::bytesFromHexString("0a 0,ff");
    std::locale::global(before);
    EXPECT_EQ(bytes, (Bytes{0x0A, 0x00})) << "in another locale";
}

TEST(HexTextTest, EveryByteIsTwoLowerCaseDigitsAndABlankAndReadsBack) {
    EXPECT_EQ(Util::hexStringFromBytes(Bytes{0x0A, 0xFF, 0x10}), "0a ff 10 ");
    Bytes all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    std::string text = "bytes: ";
    Util::appendHexString(text, all);
    EXPECT_EQ(Util::bytesFromHexString(text.substr(7)), all);
}

TEST(UtilDeathTest, WhatCannotReportAFailureEndsTheProcess) {
    const std::uint8_t byte = 0;
    const std::span tooManyForAString(&byte, std::size_t{1} << 62U);
    EXPECT_DEATH((void)Util::hexStringFromBytes(tooManyForAString), "terminate called");
    std::string key;
    EXPECT_TRUE(noexcept(Util::stripDomainFromKey(key, "Algs")));
    EXPECT_TRUE(noexcept(Util::stringFromImage(InputReport::Image{}, false)));
}

// The blank behind a place belongs to its value; a value longer than its place pushes the rest of its row along.
TEST(ImageTextTest, ShowsEverySignalOrUnsignedRawValueInItsPlace) {
    InputReport::Image image{};
    image.frameNumber = 4294967295;
    image.timestampMs = 1000;
    //                  A  B   C    D     E   F    G     H      I  J   K       L      M       N  O
    image.padSignal = {1, 22, 333, 4444, -5, -66, -777, -8888, 9, 10, -12345, 32767, -32768, 0, 100};
    image.padRaw = {65535, 2, 3, 4, 5, 6, 7, 8, 60000, 10, 11, 12, 13, 14, 1234};
    EXPECT_EQ(Util::stringFromImage(image, false), "# Image frame 4294967295    time 1000 ms\n"
                                                   "\n"
                                                   "           -8888      -777          \n"
                                                   "                 9                 \n"
                                                   "     22                    1      \n"
                                                   "         10           10          \n"
                                                   "     -66                  -5      \n"
                                                   "  1                           22  \n"
                                                   "                -12345                 \n"
                                                   " 4444                         333 \n"
                                                   "     -5                   -66     \n"
                                                   "         32767          32767         \n"
                                                   "     333                  4444    \n"
                                                   "                -32768                 \n"
                                                   "            0       100           \n");
    EXPECT_THAT(Util::stringFromImage(image, true), testing::HasSubstr("      6                    5      \n"
                                                                       " 65535                           2  \n"
                                                                       "                11                 \n"));
}

TEST(TimeTest, ScalingTruncatesAndWrapsBeforeItDivides) {
    constexpr auto kMax = std::numeric_limits<std::uint64_t>::max();
    struct Row {
        const char* name;
        std::uint64_t time;
        std::uint32_t multiplier, divisor;
        std::uint64_t scaled;
    };
    for (const Row& row : {
             Row{"multiplies before it divides, and truncates", 2, 125, 3, 83},
             Row{"largest product that fits", kMax / 125, 125, 3, 6148914691236517166},
             Row{"first product that wraps", kMax / 125 + 1, 125, 3, 3},
             Row{"64-bit divisor arithmetic", kMax, 1, std::numeric_limits<std::uint32_t>::max(), 0x100000001},
             Row{"no divisor", 7, 125, 0, 0},
         })
        EXPECT_EQ(Util::scaledTime(row.time, row.multiplier, row.divisor), row.scaled) << row.name;
}

TEST(KeyDomainTest, IsStrippedWithItsDotOnlyWhereTheKeyBeginsWithBoth) {
    for (const auto& [key, left] : std::initializer_list<std::pair<std::string, std::string>>{
             {"Algs.HoldTimeoutMilliseconds", "HoldTimeoutMilliseconds"},
             {"Algs.", ""},
             {"Algs.Algs.x", "Algs.x"},
             {"Pipeline.Algs.x", "Pipeline.Algs.x"},
             {"Algs", "Algs"},
             {"Algsx.y", "Algsx.y"},
             {"algs.x", "algs.x"}}) {
        std::string rest = key;
        EXPECT_EQ(Util::stripDomainFromKey(rest, "Algs"), left != key) << key;
        EXPECT_EQ(rest, left);
    }
}

} // namespace
} // namespace VeltoTouch::Tests
