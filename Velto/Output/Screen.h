#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace VeltoTouch::Velto {

// The whole terminal as rows and columns of text, until this is destroyed: then the terminal is as it was. A fault of
// the program and a stop signal that finds it waiting for the terminal restore the terminal too.
//
// The terminal's signals are taken by `handleSignals`. Other threads must block them, as those of NSThread do.
// One at a time, on the main thread.
class Screen {
public:
    enum class Ink : std::uint8_t { Plain, Blue, Cyan, Green, Yellow, Red }; // plain without colours, or with NO_COLOR
    struct Style {
        Ink ink = Ink::Plain;
        bool isBold = false;
        bool isReverse = false;
    };
    enum class Key : std::uint8_t { Left, Right, Up, Down, PageUp, PageDown, Home, End, Space, Letter };
    struct Press {
        Key key;
        char letter; // of Letter
    };

    // Keys are read from the standard input if it is a terminal, otherwise from the terminal that the program belongs
    // to. Throws std::runtime_error if the standard output is no terminal or one that nobody knows.
    Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen();

    [[nodiscard]] int rows() const noexcept;
    [[nodiscard]] int columns() const noexcept;

    // Begin a picture, write into it, show it. What lies outside is cut off. A terminal that takes nothing at the
    // moment is not waited for: the picture is dropped, and `show` returns false.
    void clear();
    void put(int row, int column, std::string_view text, Style style);
    void put(int row, int column, std::string_view text) { put(row, column, text, Style{}); }
    bool show();

    // Descriptors to be waited for, and what to do then. Nothing where no key is left.
    [[nodiscard]] int keys() const noexcept;
    [[nodiscard]] std::optional<Press> nextPress();
    // Whether the terminal is gone.
    [[nodiscard]] bool isGone() const noexcept;
    [[nodiscard]] int signals() const noexcept;
    // Takes in a new size, stops the program and lets it go on. Returns whether it is to end.
    [[nodiscard]] bool handleSignals();

private:
    void suspend();
    void resume();

    struct Terminal;
    const std::unique_ptr<Terminal> _terminal;
};

} // namespace VeltoTouch::Velto
