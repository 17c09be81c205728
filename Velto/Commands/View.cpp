#include "Velto/Commands/View.h"

#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr std::chrono::microseconds kPicture{1'000'000 / 60}; // at most so often
constexpr const char* kKeys = "space pause   arrows step   r raw   s save   q quit";

} // namespace

View::View(EventLoop& loop, Screen& screen, Bench::Observation& observation, const std::string& name,
           std::string output)
    : _loop(loop), _screen(screen), _observation(observation), _output(std::move(output)) {
    _state.name = "velto view " + name;
    _state.keys = kKeys;
    loop.addDescriptor(screen.keys(), [this] { handleKeys(); });
    loop.addDescriptor(screen.signals(), [this] { handleSignals(); });
    loop.addExactTimer(kPicture, [this] { beat(); });
}

void View::say(const std::string& message) {
    _state.message = message;
    markChanged();
}

std::size_t View::shown() {
    if (!_paused)
        return current();
    return *_paused = std::clamp(*_paused, _observation.firstKept(), lastMoment());
}

std::size_t View::lastMoment() const noexcept { return std::max(_observation.end(), _observation.firstKept() + 1) - 1; }

void View::beat() {
    if (!isPaused() && current() != _lastShown)
        markChanged();
    if (_hasChanged)
        draw();
}

void View::draw() {
    _lastShown = shown();
    _state.settings = settings();
    _state.isPaused = isPaused();
    _state.progress = isPaused() ? pausedText() : progress();
    drawView(_screen, _observation, _lastShown, _state);
    _hasChanged = !_screen.show();
}

std::string View::pausedText() {
    const std::size_t kept = _observation.end() - _observation.firstKept();
    return kept == 0 ? "paused" : fmt::format("paused {} of {}", shown() - _observation.firstKept() + 1, kept);
}

void View::handleSignals() {
    if (_screen.handleSignals())
        _loop.stop();
    draw();
}

void View::handleKeys() {
    while (const auto press = _screen.nextPress())
        handle(*press);
    if (_screen.isGone())
        _loop.stop();
    markChanged();
}

void View::handle(Screen::Press press) {
    using Key = Screen::Key;
    _state.message.clear();
    switch (press.key) {
    case Key::Left:
        return step(-1);
    case Key::Right:
        return step(1);
    case Key::PageUp:
        return stepSeconds(-1);
    case Key::PageDown:
        return stepSeconds(1);
    case Key::Up:
        return stepTouch(false);
    case Key::Down:
        return stepTouch(true);
    case Key::Home:
        pause();
        _paused = _observation.firstKept();
        return;
    case Key::End:
        pause();
        _paused = lastMoment();
        return;
    case Key::Space:
        return isPaused() ? goOn() : pause();
    case Key::Letter:
        return handleLetter(press.letter);
    }
}

void View::handleLetter(char letter) {
    if (letter == 'q')
        _loop.stop();
    else if (letter == 'r')
        _state.showsRaw = !_state.showsRaw;
    else if (letter == 's')
        save();
}

void View::stand() {
    if (!isPaused())
        pause();
}

void View::step(int by) {
    stand();
    const std::size_t now = shown();
    if (by > 0)
        _paused = std::min(now + 1, lastMoment());
    else
        _paused = now > _observation.firstKept() ? now - 1 : now;
}

void View::stepSeconds(int by) {
    stand();
    if (_observation.end() == _observation.firstKept())
        return;
    const HostTime second = std::chrono::seconds(1);
    const HostTime start = _observation.moment(shown()).time;
    const auto isFar = [&](std::size_t number) {
        const HostTime time = _observation.moment(number).time;
        return by > 0 ? time >= start + second : time + second <= start;
    };
    std::size_t before = 0;
    do {
        before = shown();
        step(by);
    } while (shown() != before && !isFar(shown()));
}

// To the end of the touch before or behind.
void View::stepTouch(bool isForward) {
    stand();
    const auto& decisions = _observation.decisions();
    const auto place = [](const Bench::Observation::Decision& decision) { return decision.moment; };
    if (isForward) {
        const auto next = std::ranges::upper_bound(decisions, shown(), {}, place);
        if (next != decisions.end())
            _paused = next->moment;
        return;
    }
    const auto next = std::ranges::lower_bound(decisions, shown(), {}, place);
    if (next != decisions.begin() && std::prev(next)->moment >= _observation.firstKept())
        _paused = std::prev(next)->moment;
}

void View::save() {
    const std::string file =
        _output.empty() ? fmt::format("velto-view-{:%Y%m%d-%H%M%S}.json", fmt::localtime(std::time(nullptr))) : _output;
    try {
        writeFile(file, _observation.recording().json()->bytes());
        _state.message = fmt::format("saved {}", file);
    } catch (const std::exception& error) {
        _state.message = fmt::format("not saved: {}: {}", file, messageOf(error));
    }
}

} // namespace VeltoTouch::Velto
