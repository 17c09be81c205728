#pragma once

#include "Velto/Bench/Observation.h"
#include "Velto/Commands/ViewPicture.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Output/Screen.h"

#include <cstddef>
#include <optional>
#include <string>

namespace VeltoTouch::Velto {

// What `velto view` shows, and what the keys do to it: a moment of an observation, the current one or, while it is
// paused, one that the keys choose.
//
// The loop's thread. A failure to save is shown; the rest throws what the screen throws.
class View {
public:
    // All but the texts outlive this. `output` is where `s` saves; empty: a new file, named after the time.
    View(EventLoop& loop, Screen& screen, Bench::Observation& observation, const std::string& name, std::string output);
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    virtual ~View() = default;

    void markChanged() noexcept { _hasChanged = true; }

protected:
    // Where a picture that is not paused stands.
    [[nodiscard]] virtual std::size_t current() = 0;
    [[nodiscard]] virtual std::string settings() const = 0;
    // Behind "live" or the like; also whether it goes on.
    [[nodiscard]] virtual std::string progress() const = 0;
    // Shows a message until the next key.
    void say(const std::string& message);
    virtual void pause() { _paused = current(); }
    virtual void goOn() { _paused.reset(); }

    [[nodiscard]] EventLoop& loop() const noexcept { return _loop; }
    [[nodiscard]] const Bench::Observation& observation() const noexcept { return _observation; }
    [[nodiscard]] bool isPaused() const noexcept { return _paused.has_value(); }
    [[nodiscard]] std::size_t shown();
    [[nodiscard]] std::size_t lastMoment() const noexcept;

private:
    void beat();
    void draw();
    [[nodiscard]] std::string pausedText();
    void handleSignals();
    void handleKeys();
    void handle(Screen::Press press);
    void handleLetter(char letter);
    void stand();
    void step(int by);
    void stepSeconds(int by);
    void stepTouch(bool isForward);
    void save();

    EventLoop& _loop;
    Screen& _screen;
    Bench::Observation& _observation;
    const std::string _output;
    ViewState _state;
    std::optional<std::size_t> _paused; // the moment that is shown; none: it goes on
    std::size_t _lastShown = 0;
    bool _hasChanged = true;
};

} // namespace VeltoTouch::Velto
