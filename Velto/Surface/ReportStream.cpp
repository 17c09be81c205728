#include "Velto/Surface/ReportStream.h"

#include "Velto/Surface/Blanks.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Surface {
namespace {

constexpr std::string_view kMagic = "VTR1";
constexpr std::size_t kTimeLength = 8;
constexpr std::size_t kHeaderLength = kTimeLength + 2;
constexpr std::size_t kLongestLine = 4096;
constexpr std::size_t kMostSeconds = 10; // digits; three hundred years
constexpr std::size_t kDecimals = 9;

[[noreturn]] void refuse(std::string_view what) { throw std::invalid_argument(std::string(what)); }

// To the nanosecond.
std::uint64_t timeOf(std::string_view text) {
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string digits(text.substr(0, point));
    const std::string_view decimals = text.substr(std::min(point + 1, text.size()));
    const bool isTime = point > 0 && point <= kMostSeconds && decimals.size() <= kDecimals &&
                        text.find_first_not_of("0123456789.") == std::string_view::npos &&
                        decimals.find('.') == std::string_view::npos;
    if (!isTime)
        refuse("a time in seconds is wanted before the colon");
    digits += decimals;
    digits.append(kDecimals - decimals.size(), '0');
    std::uint64_t time = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), time);
    return time;
}

std::uint8_t digitOf(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<std::uint8_t>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<std::uint8_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F')
        return static_cast<std::uint8_t>(c - 'A' + 10);
    refuse("hexadecimal bytes are wanted, two digits each");
}

// Blanks may stand between bytes, not within one.
std::vector<std::uint8_t> bytesOf(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size();) {
        if (kBlanks.find(text[i]) != std::string_view::npos) {
            ++i;
            continue;
        }
        const std::uint8_t high = digitOf(text[i]);
        const std::uint8_t low = digitOf(i + 1 < text.size() ? text[i + 1] : ' ');
        bytes.push_back(static_cast<std::uint8_t>(high << 4U | low));
        i += 2;
    }
    return bytes;
}

void requireLength(std::size_t length) {
    if (length > ReportStream::kLongestReport)
        refuse(fmt::format("a report has {} bytes at most", ReportStream::kLongestReport));
}

std::uint64_t numberOf(std::string_view bytes) noexcept {
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8U | static_cast<std::uint8_t>(bytes[i]);
    return number;
}

// Does a step at a place, with which its failure is thrown on.
template <class Step>
void at(std::string_view unit, std::uint64_t place, const Step& step) {
    try {
        step();
    } catch (const std::invalid_argument& error) {
        throw std::invalid_argument(fmt::format("{} {}: {}", unit, place, error.what()));
    }
}

} // namespace

bool ReportStream::mayBeginWith(char byte) noexcept {
    return byte == kMagic.front() || byte == '#' || std::isxdigit(static_cast<unsigned char>(byte)) != 0;
}

void ReportStream::add(std::span<const std::uint8_t> bytes, const Handler& handler) {
    _pending.append(bytes.begin(), bytes.end());
    if (!isFormKnown(false))
        return;
    _form == Form::Lines ? takeLines(handler) : takeRecords(handler);
}

void ReportStream::finish(const Handler& handler) {
    if (!isFormKnown(true))
        return;
    if (_form == Form::Binary && !_pending.empty())
        at("byte", _place, [] { refuse("the stream ends inside a report"); });
    if (_form == Form::Lines && !_pending.empty()) {
        _pending += '\n';
        takeLines(handler);
    }
}

bool ReportStream::isFormKnown(bool isEnd) {
    if (_form != Form::Unknown)
        return true;
    if (_pending.size() < kMagic.size() && !isEnd && kMagic.starts_with(_pending))
        return false;
    _form = Form::Lines;
    if (_pending.starts_with(kMagic)) {
        _form = Form::Binary;
        _pending.erase(0, kMagic.size());
        _place = kMagic.size();
    }
    return true;
}

void ReportStream::takeLines(const Handler& handler) {
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = _pending.find('\n', begin)) != std::string::npos; begin = end + 1) {
        const std::string_view line = std::string_view(_pending).substr(begin, end - begin);
        at("line", ++_place, [&] { takeLine(line, handler); });
    }
    _pending.erase(0, begin);
    if (_pending.size() > kLongestLine)
        at("line", _place + 1, [] { refuse("it is too long"); });
}

void ReportStream::takeLine(std::string_view line, const Handler& handler) const {
    line = trimmed(line);
    if (line.empty() || line.starts_with('#'))
        return;
    std::optional<std::uint64_t> time;
    if (const auto colon = line.find(':'); colon != std::string_view::npos) {
        time = timeOf(trimmed(line.substr(0, colon)));
        line.remove_prefix(colon + 1);
    }
    const std::vector<std::uint8_t> bytes = bytesOf(line);
    requireLength(bytes.size());
    handler(time, bytes);
}

void ReportStream::takeRecords(const Handler& handler) {
    std::size_t begin = 0;
    while (_pending.size() - begin >= kHeaderLength) {
        const std::string_view rest = std::string_view(_pending).substr(begin);
        const std::uint64_t time = numberOf(rest.substr(0, kTimeLength));
        const std::size_t length = numberOf(rest.substr(kTimeLength, kHeaderLength - kTimeLength));
        at("byte", _place, [length] { requireLength(length); });
        if (rest.size() < kHeaderLength + length)
            break;
        const std::vector<std::uint8_t> report(rest.begin() + kHeaderLength,
                                               rest.begin() + static_cast<std::ptrdiff_t>(kHeaderLength + length));
        handler(time == 0 ? std::nullopt : std::optional(time), report);
        begin += kHeaderLength + length;
        _place += kHeaderLength + length;
    }
    _pending.erase(0, begin);
}

} // namespace VeltoTouch::Surface
