#include "Plugin/Shared/ImageText.h"

#include "Plugin/Reports/Regions.h"

#include <cassert>

#include <fmt/format.h>

namespace VeltoTouch::Util {
namespace {

int padValue(const InputReport::Image& image, char letter, bool raw) {
    const std::size_t pad = padOf(letter);
    assert(pad < kPadCount);
    return raw ? int{image.padRaw[pad]} : int{image.padSignal[pad]};
}

// The value right-aligned in half the run's width, then padded on its right to the run's width. A text that is
// longer than the run gets as many blanks as it is too long.
void appendField(std::string& line, int value, std::size_t width) {
    const std::string text = fmt::format("{:>{}}", value, width / 2);
    const std::size_t padding = text.size() > width ? text.size() - width : width - text.size();
    line.append(text).append(padding, ' ');
}

std::string renderedRow(const InputReport::Image& image, std::string_view row, bool raw) {
    std::string line;
    std::size_t runLength = 0;
    char runLetter = '\0';
    for (const char c : row) {
        if (c != ' ') {
            ++runLength;
            runLetter = c;
            continue;
        }
        if (runLength > 0) // the field takes the place of the blank that ends the run
            appendField(line, padValue(image, runLetter, raw), runLength);
        else
            line += ' ';
        runLength = 0;
    }
    return line += '\n';
}

} // namespace

std::string stringFromImage(const InputReport::Image& image, bool raw) noexcept {
    std::string text = fmt::format("# Image frame {}    time {} ms\n\n", image.frameNumber, image.timestampMs);
    for (const std::string_view row : kPadLayout)
        text += renderedRow(image, row, raw);
    return text;
}

} // namespace VeltoTouch::Util
