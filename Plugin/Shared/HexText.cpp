#include "Plugin/Shared/HexText.h"

#include <array>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace VeltoTouch::Util {
namespace {

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr auto kDigitValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::uint8_t i = 0; i < 10; ++i)
        values[static_cast<std::size_t>('0') + i] = i;
    for (std::uint8_t i = 0; i < 6; ++i) {
        values[static_cast<std::size_t>('a') + i] = static_cast<std::uint8_t>(10 + i);
        values[static_cast<std::size_t>('A') + i] = static_cast<std::uint8_t>(10 + i);
    }
    return values;
}();

// For each byte its two digits and the blank behind them; the fourth character lets one store write them.
constexpr auto kByteTexts = [] {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::array<std::array<char, 4>, 256> texts{};
    for (std::size_t byte = 0; byte < texts.size(); ++byte)
        texts[byte] = {kDigits[byte >> 4U], kDigits[byte & 0xFU], ' ', ' '};
    return texts;
}();

constexpr std::size_t kTextPerByte = 3;

std::uint8_t digitValue(char digit) noexcept { return kDigitValues[static_cast<unsigned char>(digit)]; }

// Any other form. The stream's own rules for signs, prefixes and white space hold.
std::vector<std::uint8_t> bytesFromStream(std::string_view text) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    stream >> std::hex;
    std::vector<std::uint8_t> bytes;
    for (std::uint16_t number = 0; stream >> number;) {
        if (number > 0xFF)
            throw std::invalid_argument("invalid hex string");
        bytes.push_back(static_cast<std::uint8_t>(number));
    }
    return bytes;
}

} // namespace

std::optional<std::vector<std::uint8_t>> bytesFromHexPairs(std::string_view text) {
    if (text.size() % kTextPerByte == 1)
        return std::nullopt;
    std::vector<std::uint8_t> bytes((text.size() + 1) / kTextPerByte);
    const char* pair = text.data();
    const bool lastBlankIsMissing = text.size() % kTextPerByte == 2;
    unsigned wrong = 0; // collects every bit that a well-formed pair never sets
    for (std::size_t i = 0; i < bytes.size(); ++i, pair += kTextPerByte) {
        const unsigned high = digitValue(pair[0]);
        const unsigned low = digitValue(pair[1]);
        const bool endsText = lastBlankIsMissing && i + 1 == bytes.size();
        const unsigned separator = endsText ? ' ' : static_cast<unsigned char>(pair[2]);
        wrong |= (high | low) & 0xF0U;
        wrong |= separator ^ static_cast<unsigned>(' ');
        bytes[i] = static_cast<std::uint8_t>(high << 4U | low);
    }
    if (wrong != 0)
        return std::nullopt;
    return bytes;
}

std::vector<std::uint8_t> bytesFromHexString(std::string_view text) {
    if (auto bytes = bytesFromHexPairs(text))
        return *std::move(bytes);
    return bytesFromStream(text);
}

void appendHexString(std::string& text, std::span<const std::uint8_t> bytes) {
    const std::size_t start = text.size();
    const std::size_t length = kTextPerByte * bytes.size();
    text.resize(start + length + 1); // one more, for the fourth character of the last store
    char* end = text.data() + start;
    for (const std::uint8_t byte : bytes) {
        std::memcpy(end, kByteTexts[byte].data(), kByteTexts[byte].size());
        end += kTextPerByte;
    }
    text.resize(start + length);
}

std::string hexStringFromBytes(std::span<const std::uint8_t> bytes) noexcept {
    std::string text;
    appendHexString(text, bytes);
    return text;
}

} // namespace VeltoTouch::Util
