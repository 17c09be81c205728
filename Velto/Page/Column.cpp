#include "Velto/Page/Column.h"

#include <bit>
#include <stdexcept>
#include <string_view>

#include <zlib.h>

namespace VeltoTouch::Page {
namespace {

using Bytes = std::basic_string<std::uint8_t>;

Bytes deflated(const Bytes& bytes) {
    uLongf size = compressBound(bytes.size());
    Bytes compressed(size, 0);
    if (compress2(compressed.data(), &size, bytes.data(), bytes.size(), Z_BEST_COMPRESSION) != Z_OK)
        throw std::runtime_error("the data cannot be compressed");
    compressed.resize(size);
    return compressed;
}

std::string base64(const Bytes& bytes) {
    static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [&bytes, i](std::size_t k) {
            return i + k < bytes.size() ? std::uint32_t{bytes[i + k]} : std::uint32_t{0};
        };
        const std::uint32_t triple = byte(0) << 16U | byte(1) << 8U | byte(2);
        for (std::size_t k = 0; k < 4; ++k)
            text += i + k > bytes.size() ? '=' : kDigits[triple >> (18 - 6 * k) & 63U];
    }
    return text;
}

// The bytes of `wordOf(i)` for each of `count` numbers.
template <class WordOf>
std::string column(std::size_t count, const WordOf& wordOf) {
    constexpr std::size_t kWidth = sizeof(wordOf(0));
    Bytes bytes(count * kWidth, 0);
    for (std::size_t i = 0; i < count; ++i) {
        const auto word = wordOf(i);
        for (std::size_t place = 0; place < kWidth; ++place)
            bytes[place * count + i] = static_cast<std::uint8_t>(word >> (8 * place));
    }
    return base64(deflated(bytes));
}

std::uint32_t zigzag(std::uint32_t word) noexcept { return word << 1U ^ (word >> 31U == 0 ? 0 : ~std::uint32_t{0}); }

template <class Word>
Word difference(std::span<const Word> values, std::size_t i) noexcept {
    return i == 0 ? values[0] : values[i] - values[i - 1];
}

} // namespace

std::string bytesColumn(std::span<const std::uint8_t> values) {
    return column(values.size(), [values](std::size_t i) { return values[i]; });
}

std::string floatsColumn(std::span<const float> values) {
    return column(values.size(), [values](std::size_t i) { return std::bit_cast<std::uint32_t>(values[i]); });
}

std::string integersColumn(std::span<const std::int32_t> values) {
    return column(values.size(), [values](std::size_t i) { return zigzag(static_cast<std::uint32_t>(values[i])); });
}

std::string countersColumn(std::span<const std::uint32_t> values) {
    return column(values.size(), [values](std::size_t i) { return zigzag(difference(values, i)); });
}

std::string timesColumn(std::span<const std::uint64_t> values) {
    return column(values.size(), [values](std::size_t i) { return difference(values, i); });
}

} // namespace VeltoTouch::Page
