#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace VeltoTouch::Velto::Manual {

// Escapes text for a manual page. Dashes stay those that a shell takes.
[[nodiscard]] std::string escaped(std::string_view text);
[[nodiscard]] std::string bold(std::string_view text);
[[nodiscard]] std::string italic(std::string_view text);

// A manual page in the macros of man(7). What is called `markup` has been escaped, all else is plain text.
class Roff {
public:
    Roff(std::string_view title, std::string_view date, std::string_view source);

    void section(std::string_view heading);
    void subsection(std::string_view heading);
    void line(std::string_view markup);
    void paragraphs(std::string_view text); // an empty line between two
    void item(std::string_view termMarkup, std::string_view text);
    void literal(const std::vector<std::string>& lines);

    [[nodiscard]] const std::string& text() const noexcept { return _text; }

private:
    std::string _text;
    bool _isBeginning = false; // of a section: no new paragraph is needed
};

} // namespace VeltoTouch::Velto::Manual
