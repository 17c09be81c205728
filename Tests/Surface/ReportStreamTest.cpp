#include "Velto/Surface/ReportStream.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;

// What a stream says, given in pieces of a size: reports as TIME=BYTES, then what is wrong.
std::string readingOf(const std::string& stream, std::size_t piece) {
    Surface::ReportStream reader;
    std::string said;
    const auto say = [&said](std::optional<std::uint64_t> time, std::span<const std::uint8_t> report) {
        said += time ? fmt::format("{}=", *time) : "=";
        for (const std::uint8_t byte : report)
            said += fmt::format("{:02x}", byte);
        said += ' ';
    };
    try {
        for (std::size_t i = 0; i < stream.size(); i += piece) {
            const std::string part = stream.substr(i, piece);
            reader.add({reinterpret_cast<const std::uint8_t*>(part.data()), part.size()}, say);
        }
        reader.finish(say);
    } catch (const std::invalid_argument& error) {
        said += error.what();
    }
    return said;
}

TEST(ReportStreamTest, AStreamSaysTheSameInPiecesOfAnySize) {
    const std::string record = "\x02\x01\0\0\0\0\0\0\x02\0\xaa\x0a"s; // 258 ns
    const struct {
        std::string stream;
        std::string said;
    } kRows[]{
        {"", ""},
        {"01 F2\n\n# 03\r\n 0 : 0a0b \r\n1.5:02", "=01f2 0=0a0b 1500000000=02 "},
        {"0.000000001:\n", "1= "},
        {"01\n\n01 2\n02\n", "=01 line 3: hexadecimal bytes are wanted, two digits each"},
        {"01\n0 1\n", "=01 line 2: hexadecimal bytes are wanted, two digits each"},
        {"-1: 01\n", "line 1: a time in seconds is wanted before the colon"},
        {"1e3: 01\n", "line 1: a time in seconds is wanted before the colon"},
        {"9999999999.000000001:\n1.2.3:", "9999999999000000001= line 2: a time in seconds is wanted before the colon"},
        {"VTR", "line 1: hexadecimal bytes are wanted, two digits each"},
        {"VTR1", ""},
        {"VTR1" + record + std::string(10, '\0') + record, "258=aa0a = 258=aa0a "},
        {"VTR1" + record + "\x01", "258=aa0a byte 16: the stream ends inside a report"},
        {"VTR1" + record + "\0\0\0\0\0\0\0\0\x01\x02"s, "258=aa0a byte 16: a report has 512 bytes at most"},
        {std::string(2 * 513, 'a') + '\n', "line 1: a report has 512 bytes at most"},
        {std::string(10'000, ' '), "line 1: it is too long"},
    };
    for (const auto& [stream, said] : kRows) {
        for (const std::size_t piece : {std::size_t{1}, std::size_t{3}, std::size_t{4096}})
            EXPECT_EQ(readingOf(stream, piece), said) << "in pieces of " << piece;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
