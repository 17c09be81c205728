#pragma once

#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// What the commands say to people.

namespace VeltoTouch::Velto {

// Writes one line to standard error, whatever is in the text.
void writeErrorLine(std::string_view text);

// One line "velto: SUBJECT: MESSAGE" on standard error.
void complain(std::string_view subject, std::string_view message);

// Handles each file; what a file's handler throws is told under the file's name, and the other files are still
// handled. The exit status: 1 if any failed. A standard output that fails is passed on.
[[nodiscard]] int forEachFile(const std::vector<std::string>& files,
                              const std::function<void(const std::string& file)>& handle);

// What to print of an exception: its text, then in brackets the place of a damage, if it is known.
[[nodiscard]] std::string messageOf(const std::exception& error);

// Text of others for a terminal (names of files and devices, what recordings hold): what steers it and bytes that are
// no UTF-8 are shown as escapes. JSON stays the same JSON.
[[nodiscard]] std::string printable(std::string_view text);

// Whether a person looks at the standard output.
[[nodiscard]] bool standardOutputIsTerminal() noexcept;

// Text in a colour of the terminal on standard output; plain elsewhere and where NO_COLOR is set.
enum class Colour { Plain, Bold, Green, Yellow, Red };
[[nodiscard]] std::string coloured(Colour colour, std::string_view text);

} // namespace VeltoTouch::Velto
