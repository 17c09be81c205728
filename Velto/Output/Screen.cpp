#include "Velto/Output/Screen.h"

#include "Platform/UTF8.h"
#include "Velto/Daemon/SignalDescriptor.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Output/TerminalRescue.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <memory>
#include <stdexcept>

#define NCURSES_NOMACROS // functions in place of macros with common names
#include <curses.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

// What makes the terminal do something; null if it cannot.
const char* capabilityNamed(const char* name) noexcept {
    const char* const text = tigetstr(name);
    return text == reinterpret_cast<const char*>(-1) ? nullptr : text; // NOLINT: as the library says it
}

struct CloseFile {
    void operator()(FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

// In the order of the inks.
constexpr std::array<short, 6> kColours{-1, COLOR_BLUE, COLOR_CYAN, COLOR_GREEN, COLOR_YELLOW, COLOR_RED};

// The bytes of the first `columns` characters.
std::size_t lengthOf(std::string_view text, int columns) noexcept {
    std::size_t length = 0;
    for (; columns > 0 && length < text.size(); --columns)
        length += std::max<std::size_t>(UTF8::sequenceLength(text.substr(length)), 1);
    return std::min(length, text.size());
}

} // namespace

struct Screen::Terminal {
    File ownInput; // null: the standard input
    SCREEN* screen = nullptr;
    std::optional<SignalDescriptor> signals;
    bool hasColours = false;

    [[nodiscard]] FILE* input() const noexcept { return ownInput ? ownInput.get() : stdin; }

    Terminal() {
        if (::isatty(STDOUT_FILENO) == 0)
            throw std::runtime_error("the standard output is no terminal");
        if (::isatty(STDIN_FILENO) == 0) {
            ownInput.reset(std::fopen("/dev/tty", "re"));
            if (!ownInput)
                throw std::runtime_error("there is no terminal to read keys from");
        }
        signals.emplace({SIGHUP, SIGQUIT, SIGTSTP, SIGCONT, SIGWINCH});
        begin();
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        const TerminalRescue::Patience patience; // with a terminal that takes nothing
        ::endwin();
        TerminalRescue::end();
        ::delscreen(screen);
    }

    void begin() {
        std::setlocale(LC_CTYPE, "");
        TerminalRescue::keepModes();
        ::use_env(TRUE);
        screen = ::newterm(nullptr, stdout, input());
        if (screen == nullptr)
            throw std::runtime_error("a terminal of this kind is not known (TERM)");
        if (capabilityNamed("cup") == nullptr) {
            ::endwin();
            ::delscreen(screen);
            throw std::runtime_error("nothing can be placed on a terminal of this kind (TERM)");
        }
        TerminalRescue::begin(
            {capabilityNamed("sgr0"), capabilityNamed("rmkx"), capabilityNamed("cnorm"), capabilityNamed("rmcup")});
        ::cbreak();
        ::noecho();
        ::nonl();
        ::curs_set(0);
        ::set_escdelay(25);
        ::keypad(stdscr, TRUE);
        ::nodelay(stdscr, TRUE);
        hasColours = !refusesColours() && ::has_colors();
        if (!hasColours)
            return;
        ::start_color();
        ::use_default_colors();
        for (short i = 0; i < static_cast<short>(kColours.size()); ++i)
            ::init_pair(i, kColours[static_cast<std::size_t>(i)], -1);
    }

    [[nodiscard]] attr_t attributesOf(Style style) const noexcept {
        attr_t attributes = hasColours ? static_cast<attr_t>(COLOR_PAIR(static_cast<int>(style.ink))) : 0;
        attributes |= style.isBold ? A_BOLD : 0;
        attributes |= style.isReverse ? A_REVERSE : 0;
        return attributes;
    }
};

Screen::Screen() : _terminal(std::make_unique<Terminal>()) {}

Screen::~Screen() = default;

int Screen::rows() const noexcept { return LINES; }

int Screen::columns() const noexcept { return COLS; }

void Screen::clear() { ::werase(stdscr); }

void Screen::put(int row, int column, std::string_view text, Style style) {
    if (row < 0 || row >= rows() || column < 0 || column >= columns())
        return;
    ::wattrset(stdscr, static_cast<int>(_terminal->attributesOf(style)));
    ::mvwaddnstr(stdscr, row, column, text.data(), static_cast<int>(lengthOf(text, columns() - column)));
}

bool Screen::show() {
    if (!TerminalRescue::isReady(STDOUT_FILENO, POLLOUT))
        return false;
    const TerminalRescue::Patience patience;
    ::wrefresh(stdscr);
    return true;
}

int Screen::keys() const noexcept { return ::fileno(_terminal->input()); }

std::optional<Screen::Press> Screen::nextPress() {
    for (;;) {
        const int code = ::wgetch(stdscr);
        switch (code) {
        case ERR:
            return std::nullopt;
        case KEY_LEFT:
            return Press{Key::Left, 0};
        case KEY_RIGHT:
            return Press{Key::Right, 0};
        case KEY_UP:
            return Press{Key::Up, 0};
        case KEY_DOWN:
            return Press{Key::Down, 0};
        case KEY_PPAGE:
            return Press{Key::PageUp, 0};
        case KEY_NPAGE:
            return Press{Key::PageDown, 0};
        case KEY_HOME:
            return Press{Key::Home, 0};
        case KEY_END:
            return Press{Key::End, 0};
        case ' ':
            return Press{Key::Space, 0};
        default:
            if (code > ' ' && code < 0x7F)
                return Press{Key::Letter, static_cast<char>(code)};
        }
    }
}

bool Screen::isGone() const noexcept { return TerminalRescue::isReady(keys(), POLLHUP | POLLERR); }

int Screen::signals() const noexcept { return _terminal->signals->get(); }

bool Screen::handleSignals() {
    bool isToEnd = false;
    while (const auto signal = _terminal->signals->next()) {
        switch (signal->ssi_signo) {
        case SIGTSTP:
            suspend();
            break;
        case SIGCONT:
            resume();
            break;
        case SIGWINCH:
            if (winsize size{}; ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0)
                ::resizeterm(size.ws_row, size.ws_col);
            break;
        default:
            isToEnd = true;
        }
    }
    return isToEnd;
}

// Stops with the terminal as it was, as everybody does.
void Screen::suspend() {
    ::endwin();
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTSTP);
    std::signal(SIGTSTP, SIG_DFL);
    std::raise(SIGTSTP); // waits for its turn
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    resume();
}

// Whoever ran meanwhile may have left anything.
void Screen::resume() {
    ::reset_prog_mode();
    ::clearok(curscr, TRUE);
}

} // namespace VeltoTouch::Velto
