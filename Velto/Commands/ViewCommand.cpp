#include "Plugin/Shared/Keys.h"
#include "Velto/Bench/LiveSurface.h"
#include "Velto/Bench/Observation.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/Hosting.h"
#include "Velto/Commands/ViewPicture.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/StopSignals.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Bench::Observation;

constexpr const char* kText = "Shows the surface live in the terminal while somebody presses: its pads, the touch\n"
                              "in progress and why the last ones became what they became. Of a recording the same,\n"
                              "at its own pace or image by image. A device may be served at the same time.\n"
                              "\n"
                              "Space pauses and goes on, left and right step by an image, page up and down by a\n"
                              "second, up and down from touch to touch, home and end to the first and the newest;\n"
                              "r shows raw values, s saves what was seen as a recording, q quits.";

constexpr std::chrono::microseconds kPicture{1'000'000 / 60}; // at most so often
constexpr const char* kKeys = "space pause   arrows step   r raw   s save   q quit";

struct Options {
    Watched watched;
    std::vector<Setting> settings;
    Bus::Which bus = Bus::Which::System;
    std::string output; // empty: a name with the time
};

// The recording's content in the order of time; the settings given take the place of its own.
void observe(Observation& observation, const std::string& file, const std::vector<Setting>& settings) {
    const PipelineRecording recording = loadRecording(file);
    for (const Setting& setting : settings)
        observation.set({}, setting);
    for (const Frame& frame : recording.frames()) {
        const HostTime time(frame.timestampNs);
        if (frame.type == Frame::Type::InputReport)
            observation.report(time, frame.report);
        std::string key = fmt::format("{}.{}", Keys::kPipelineDomain, frame.key);
        if (frame.type == Frame::Type::State && std::ranges::find(settings, key, &Setting::key) == settings.end())
            observation.set(time, {.key = std::move(key), .value = frame.value});
    }
}

// What is on the screen, and what the keys do to it.
class View {
public:
    View(EventLoop& loop, Screen& screen, Observation& observation, const std::string& name, const Options& options)
        : _loop(loop), _screen(screen), _observation(observation), _output(options.output) {
        _state.name = "velto view " + name;
        _state.keys = kKeys;
        loop.addDescriptor(screen.keys(), [this] { handleKeys(); });
        loop.addDescriptor(screen.signals(), [this] { handleSignals(); });
        loop.addTimer(kPicture, [this] { beat(); });
    }
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
    virtual void pause() { _paused = current(); }
    virtual void goOn() { _paused.reset(); }

    [[nodiscard]] EventLoop& loop() const noexcept { return _loop; }
    [[nodiscard]] const Observation& observation() const noexcept { return _observation; }
    [[nodiscard]] bool isPaused() const noexcept { return _paused.has_value(); }
    [[nodiscard]] std::size_t shown() {
        if (!_paused)
            return current();
        return *_paused = std::clamp(*_paused, _observation.firstKept(), lastMoment());
    }
    [[nodiscard]] std::size_t lastMoment() const noexcept {
        return std::max(_observation.end(), _observation.firstKept() + 1) - 1;
    }

private:
    void beat() {
        if (!isPaused() && current() != _lastShown)
            markChanged();
        if (_hasChanged)
            draw();
    }
    void draw() {
        _lastShown = shown();
        _state.settings = settings();
        _state.isPaused = isPaused();
        _state.progress = isPaused() ? pausedText() : progress();
        drawView(_screen, _observation, _lastShown, _state);
        _hasChanged = !_screen.show();
    }
    [[nodiscard]] std::string pausedText() {
        const std::size_t kept = _observation.end() - _observation.firstKept();
        return kept == 0 ? "paused" : fmt::format("paused {} of {}", shown() - _observation.firstKept() + 1, kept);
    }

    void handleSignals() {
        if (_screen.handleSignals())
            _loop.stop();
        draw();
    }

    void handleKeys() {
        while (const auto press = _screen.nextPress())
            handle(*press);
        if (_screen.isGone())
            _loop.stop();
        markChanged();
    }
    void handle(Screen::Press press) {
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
    void handleLetter(char letter) {
        if (letter == 'q')
            _loop.stop();
        else if (letter == 'r')
            _state.showsRaw = !_state.showsRaw;
        else if (letter == 's')
            save();
    }

    void stand() {
        if (!isPaused())
            pause();
    }
    void step(int by) {
        stand();
        const std::size_t now = shown();
        if (by > 0)
            _paused = std::min(now + 1, lastMoment());
        else
            _paused = now > _observation.firstKept() ? now - 1 : now;
    }
    void stepSeconds(int by) {
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
    void stepTouch(bool isForward) {
        stand();
        const auto& decisions = _observation.decisions();
        const auto place = [](const Observation::Decision& decision) { return decision.moment; };
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

    void save() {
        try {
            const std::string file =
                _output.empty() ? fmt::format("velto-view-{:%Y%m%d-%H%M%S}.json", fmt::localtime(std::time(nullptr)))
                                : _output;
            writeFile(file, _observation.recording().json()->bytes());
            _state.message = fmt::format("saved {}", file);
        } catch (const std::exception& error) {
            _state.message = fmt::format("not saved: {}", messageOf(error));
        }
    }

    EventLoop& _loop;
    Screen& _screen;
    Observation& _observation;
    const std::string _output;
    ViewState _state;
    std::optional<std::size_t> _paused; // the moment that is shown; none: it goes on
    std::size_t _lastShown = 0;
    bool _hasChanged = true;
};

// The newest moment of a device. When the device has gone, the view ends unless it is paused.
class LiveView final : public View {
public:
    LiveView(EventLoop& loop, Screen& screen, Observation& observation, const Options& options,
             const Surface::ConnectedDevice& device)
        : View(loop, screen, observation, device.name(), options),
          _surface(
              loop, device, options.bus, options.settings,
              {.report = [&observation](HostTime time,
                                        std::span<const std::uint8_t> report) { observation.report(time, report); },
               .setting = [&observation](HostTime time, const Setting& setting) { observation.set(time, setting); },
               .batchEnd = [this] { markChanged(); },
               .gone = [this](const std::string& failure) { end(failure); }}) {}

    // Why the device has gone; empty if it just has.
    [[nodiscard]] const std::string& failure() const noexcept { return _failure; }

private:
    [[nodiscard]] std::size_t current() override { return lastMoment(); }
    [[nodiscard]] std::string settings() const override { return _surface.settings().description(); }
    [[nodiscard]] std::string progress() const override { return "live"; }
    void goOn() override { _hasGone ? loop().stop() : View::goOn(); }

    void end(const std::string& failure) {
        _hasGone = true;
        _failure = failure;
        if (!isPaused())
            loop().stop();
    }

    bool _hasGone = false;
    std::string _failure;
    Bench::LiveSurface _surface;
};

// A recording at its own pace.
class RecordingView final : public View {
public:
    RecordingView(EventLoop& loop, Screen& screen, Observation& observation, const Options& options)
        : View(loop, screen, observation, options.watched.name, options), _settings(options.settings.size()) {
        playFrom(0);
    }

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] std::size_t current() override {
        const HostTime time = _startTime + std::chrono::duration_cast<HostTime>(Clock::now() - _start);
        while (_current < lastMoment() && observation().moment(_current + 1).time <= time)
            ++_current;
        return _current;
    }
    [[nodiscard]] std::string settings() const override {
        return _settings == 0 ? "the recording's" : fmt::format("the recording's, {} of the command line", _settings);
    }
    [[nodiscard]] std::string progress() const override { return _current == lastMoment() ? "at its end" : "playing"; }
    void goOn() override {
        playFrom(shown() == lastMoment() ? 0 : shown());
        View::goOn();
    }
    void playFrom(std::size_t moment) {
        _current = moment;
        _start = Clock::now();
        _startTime = observation().end() == 0 ? HostTime{} : observation().moment(moment).time;
    }

    const std::size_t _settings;
    std::size_t _current = 0;
    Clock::time_point _start;
    HostTime _startTime{};
};

int viewRecording(const Options& options, const std::string& file) {
    Observation observation(0);
    about(file, [&] { observe(observation, file, options.settings); });
    EventLoop loop;
    const StopSignals signals(loop);
    Screen screen;
    RecordingView view(loop, screen, observation, options);
    loop.run();
    return 0;
}

int viewDevice(const Options& options, const DeviceChoice& choice) {
    EventLoop loop;
    const auto device = about(choice.subject(), [&] { return connect(choice, 1.0); });
    const StopSignals signals(loop); // before any thread
    Observation observation(kMaxRecordedFrames);
    std::string failure;
    about(choice.subject(), [&] {
        Screen screen;
        LiveView view(loop, screen, observation, options, device);
        loop.run();
        failure = view.failure();
    });
    if (failure.empty())
        return 0;
    complain(choice.subject(), failure);
    return 1;
}

int view(const Options& options) {
    warnOfDoubtfulSettings(options.settings);
    leaveOutColours(); // those of the library are others
    const DeviceChoice* device = options.watched.device();
    return device != nullptr ? viewDevice(options, *device)
                             : viewRecording(options, std::get<RecordedSurface>(options.watched.what).file);
}

} // namespace

Command makeViewCommand(App& program) {
    const auto options = std::make_shared<Options>();
    App* app = program.addCommand("view", {"velto view surface", "velto view sim", "velto view gestures.json"}, kText);
    addWatched(*app, options->watched, "A device, or a recording that exists; see below");
    addSettings(*app, options->settings, KeyScope::Pipeline, "Recognize with other settings than those in force");
    app->offer(app->add_option("-o", options->output, "Where s saves (default: a new file here, named after the time)"),
               fileNames())
        ->type_name("OUT");
    addBus(*app, options->bus);
    return {app, [options] { return view(*options); }};
}

} // namespace VeltoTouch::Velto
