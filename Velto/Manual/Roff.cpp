#include "Velto/Manual/Roff.h"

#include <cctype>
#include <sstream>

#include <fmt/format.h>

namespace VeltoTouch::Velto::Manual {
namespace {

std::string capitals(std::string_view text) {
    std::string result;
    for (const char character : text)
        result += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    return result;
}

} // namespace

std::string escaped(std::string_view text) {
    std::string result;
    bool isLineBeginning = true;
    for (const char character : text) {
        switch (character) {
        case '\\':
            result += "\\e";
            break;
        case '-':
            result += "\\-";
            break;
        case '\'':
            result += "\\(aq";
            break;
        case '"':
            result += "\\(dq";
            break;
        case '`':
            result += "\\(ga";
            break;
        case '^':
            result += "\\(ha";
            break;
        case '~':
            result += "\\(ti";
            break;
        case '.':
            result += isLineBeginning ? "\\&." : ".";
            break;
        default:
            result += character;
        }
        isLineBeginning = character == '\n';
    }
    return result;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }

std::string italic(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }

Roff::Roff(std::string_view title, std::string_view date, std::string_view source) {
    // Names are neither hyphenated nor spread, so that a search finds them.
    _text = fmt::format(".TH \"{}\" 1 {} \"{}\"\n.nh\n.ad l\n", escaped(capitals(title)), date, escaped(source));
}

void Roff::section(std::string_view heading) {
    _text += fmt::format(".SH {}\n", escaped(capitals(heading)));
    _isBeginning = true;
}

void Roff::subsection(std::string_view heading) {
    _text += fmt::format(".SS {}\n", escaped(heading));
    _isBeginning = true;
}

void Roff::line(std::string_view markup) {
    _text += markup;
    _text += '\n';
    _isBeginning = false;
}

void Roff::paragraphs(std::string_view text) {
    if (text.empty())
        return;
    if (!_isBeginning)
        line(".PP");
    std::istringstream lines{std::string(text)};
    for (std::string next; std::getline(lines, next);)
        line(next.empty() ? ".PP" : escaped(next));
}

void Roff::item(std::string_view termMarkup, std::string_view text) {
    line(".TP");
    line(termMarkup);
    line(text.empty() ? "\\&" : escaped(text));
}

void Roff::literal(const std::vector<std::string>& lines) {
    if (!_isBeginning)
        line(".PP");
    line(".nf");
    for (const std::string& next : lines)
        line(escaped(next));
    line(".fi");
}

} // namespace VeltoTouch::Velto::Manual
