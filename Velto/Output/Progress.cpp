#include "Velto/Output/Progress.h"

#include "Velto/Output/Terminal.h"

#include <cstdio>

#include <fmt/format.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

constexpr int kCallsBetweenLooks = 64;
constexpr std::chrono::milliseconds kFirstShown{1000};
constexpr std::chrono::milliseconds kBetweenUpdates{100};

} // namespace

Progress::Progress(std::string_view work, std::uint64_t total)
    : _work(printable(work)), _total(total), _isShown(::isatty(STDERR_FILENO) != 0),
      _next(std::chrono::steady_clock::now() + kFirstShown) {}

Progress::~Progress() {
    if (_isWritten)
        std::fputs(kWipedLine, stderr);
}

void Progress::look(std::uint64_t done) {
    _callsUntilLook = kCallsBetweenLooks;
    const auto now = std::chrono::steady_clock::now();
    if (now < _next)
        return;
    _next = now + kBetweenUpdates;
    _isWritten = true;
    const std::string amount =
        _total == 0 ? fmt::format("{}", done)
                    : fmt::format("{:.0f} %", 100.0 * static_cast<double>(done) / static_cast<double>(_total));
    std::fputs((kWipedLine + onOneRow(fmt::format("{}: {}", _work, amount))).c_str(), stderr);
}

} // namespace VeltoTouch::Velto
