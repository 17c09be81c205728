#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace VeltoTouch::Surface {

// Reads reports from a stream of bytes as they come, in one of two forms (Docs/piped-reports.md):
//
//   1.250: 01 f2 0a ...    lines: hexadecimal bytes, the report ID first, with or without blanks between; before them,
//                          if it is known, the time in seconds and a colon. Empty lines and those with # are skipped
//   VTR1                   these four bytes, then for each report 8 bytes of time in nanoseconds (0: not known),
//                          2 bytes of length, and so many bytes. Numbers are little-endian
class ReportStream {
public:
    static constexpr std::size_t kLongestReport = 512;

    // Whether a stream may begin so. A recording never does, unless it is damaged.
    [[nodiscard]] static bool mayBeginWith(char byte) noexcept;

    // `timeNs`: none if the stream does not say it.
    using Handler = std::function<void(std::optional<std::uint64_t> timeNs, std::span<const std::uint8_t> report)>;

    // Takes in more of the stream and calls the handler for each report that is whole. Throws std::invalid_argument
    // with the place and what is wrong there; nothing is to be added after that.
    void add(std::span<const std::uint8_t> bytes, const Handler& handler);
    // The stream has ended: a last line needs no end. Throws as `add` does, also where a report is cut off.
    void finish(const Handler& handler);

private:
    enum class Form { Unknown, Lines, Binary };

    [[nodiscard]] bool isFormKnown(bool isEnd);
    void takeLines(const Handler& handler);
    void takeRecords(const Handler& handler);
    void takeLine(std::string_view line, const Handler& handler) const;

    Form _form = Form::Unknown;
    std::string _pending;     // what is not whole
    std::uint64_t _place = 0; // lines, or bytes, taken so far
};

} // namespace VeltoTouch::Surface
