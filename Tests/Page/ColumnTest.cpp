#include "Velto/Page/Column.h"
#include "Velto/Page/Document.h"

#include <bit>
#include <limits>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <zlib.h>

namespace VeltoTouch::Tests {
namespace {

// The words of a column, `width` bytes each.
std::vector<std::uint64_t> wordsIn(std::string_view base64, std::size_t count, std::size_t width) {
    static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(base64.size() % 4, 0U);
    std::vector<unsigned char> packed;
    unsigned bits = 0;
    for (std::size_t i = 0; i < base64.size() && base64[i] != '='; ++i) {
        bits = bits << 6U | static_cast<unsigned>(kDigits.find(base64[i]));
        if (i % 4 > 0)
            packed.push_back(static_cast<unsigned char>(bits >> (6 - i % 4 * 2)));
    }
    std::vector<unsigned char> bytes(count * width + 1);
    uLongf size = bytes.size();
    EXPECT_EQ(uncompress(bytes.data(), &size, packed.data(), packed.size()), Z_OK);
    EXPECT_EQ(size, count * width);
    std::vector<std::uint64_t> words(count);
    for (std::size_t i = 0; i < count * width; ++i)
        words[i % count] |= std::uint64_t{bytes[i]} << (i / count * 8);
    return words;
}

TEST(ColumnTest, EveryNumberComesBack) {
    const std::vector<std::int32_t> integers{
        0, -1, 1, 127, -128, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    const auto zigzagged = wordsIn(Page::integersColumn(integers), integers.size(), 4);
    for (std::size_t i = 0; i < integers.size(); ++i)
        EXPECT_EQ(static_cast<std::int32_t>(zigzagged[i] >> 1U ^ (0 - (zigzagged[i] & 1U))), integers[i]);

    const std::vector<std::uint32_t> counters{4'294'967'295U, 0, 1, 3'000'000'000U, 5};
    const auto steps = wordsIn(Page::countersColumn(counters), counters.size(), 4);
    std::uint32_t counter = 0;
    for (std::size_t i = 0; i < counters.size(); ++i)
        EXPECT_EQ(counter += static_cast<std::uint32_t>(steps[i] >> 1U ^ (0 - (steps[i] & 1U))), counters[i]);
    EXPECT_LT(steps[1], 4U) << "a number that wraps is a small step";

    const std::vector<std::uint64_t> times{0, 10'000'000, 1ULL << 63U, std::numeric_limits<std::uint64_t>::max()};
    std::uint64_t time = 0;
    for (std::size_t i = 0; const std::uint64_t step : wordsIn(Page::timesColumn(times), times.size(), 8))
        EXPECT_EQ(time += step, times[i++]);

    const std::vector<float> floats{0.1F, -0.0F, std::numeric_limits<float>::infinity(), 1e-45F};
    for (std::size_t i = 0; const std::uint64_t bits : wordsIn(Page::floatsColumn(floats), floats.size(), 4))
        EXPECT_EQ(bits, std::bit_cast<std::uint32_t>(floats[i++]));

    EXPECT_TRUE(wordsIn(Page::bytesColumn({}), 0, 1).empty());
}

TEST(DocumentTest, DataIsNoMarkup) {
    const std::string page = Page::document(R"({"a":"<!--</script>"})");
    EXPECT_NE(page.find(R"({"a":"\u003c!--\u003c/script>"})"), std::string::npos);
}

} // namespace
} // namespace VeltoTouch::Tests
