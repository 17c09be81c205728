#include "Plugin/Shared/ClockConversion.h"
#include "Plugin/Shared/HexText.h"
#include "Plugin/Shared/ImageText.h"
#include "Plugin/Shared/KeyDomain.h"

#include <locale>
#include <optional>
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
             {"0A EB", Bytes{0x0A, 0xEB}},
             {"0a 0/ ff ", Bytes{0x0A, 0x00}},
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

// The blank behind a place belongs to its value; a value longer than its place pushes the rest of its row along.
TEST(ImageTextTest, ShowsEachSignalOrRawValueInItsPlace) {
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

static_assert(noexcept(Util::stripDomainFromKey(std::declval<std::string&>(), {})));
static_assert(noexcept(Util::stringFromImage(std::declval<InputReport::Image&>(), false)));
static_assert(noexcept(Util::hexStringFromBytes({})));

} // namespace
} // namespace VeltoTouch::Tests
