#pragma once

#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Messages to people.

namespace VeltoTouch::Velto {

// Goes back to the beginning of a terminal's line and clears it.
inline constexpr const char* kWipedLine = "\r\x1b[K";

// Writes one line to standard error; control characters are escaped.
void writeErrorLine(std::string_view text);

// The same, but drops the line if standard error does not take it without waiting, and the end of a long one. For a
// program that others depend on.
void writeErrorLineIfTaken(std::string_view text);

// Writes the line "velto: SUBJECT: MESSAGE" to standard error.
void complain(std::string_view subject, std::string_view message);

// Handles each file. What a file's handler throws is reported under the file's name, and the other files are still
// handled. Returns the exit status: 1 if any failed. A failure of the standard output is passed on.
[[nodiscard]] int forEachFile(const std::vector<std::string>& files,
                              const std::function<void(const std::string& file)>& handle);

// Returns an exception's text, followed in brackets by the place of a damage, if it is known.
[[nodiscard]] std::string messageOf(const std::exception& error);

// Runs a part of the work and returns its result. A failure is thrown on as a std::runtime_error under the subject's
// name.
template <class Work>
auto about(const std::string& subject, const Work& work) {
    try {
        return work();
    } catch (const std::exception& error) {
        throw std::runtime_error(subject + ": " + messageOf(error));
    }
}

// Makes foreign text (names of files and devices, contents of recordings) safe for a terminal: control characters and
// invalid UTF-8 become escapes. JSON stays the same JSON.
[[nodiscard]] std::string printable(std::string_view text);

// Returns whether the standard output is a terminal.
[[nodiscard]] bool standardOutputIsTerminal() noexcept;

// Returns whether the user wants no colours: NO_COLOR is set, and not empty.
[[nodiscard]] bool refusesColours() noexcept;

// Colours text if the standard output is a terminal and colours are not refused.
enum class Colour { Plain, Bold, Green, Yellow, Red };
[[nodiscard]] std::string coloured(Colour colour, std::string_view text);

// Makes a text stay on its row of a terminal, which leaves out what goes beyond.
[[nodiscard]] std::string onOneRow(std::string_view text);

// From now on nothing is coloured: what is written goes elsewhere.
void leaveOutColours() noexcept;

} // namespace VeltoTouch::Velto
