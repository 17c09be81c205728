#include "Plugin/Shared/Keys.h"
#include "Velto/Bench/LiveFrames.h"
#include "Velto/Bench/Observation.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/LiveRun.h"
#include "Velto/Commands/View.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/StopSignals.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/DeviceOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Bench::Observation;

constexpr const char* kViewText =
    "Shows the surface live in the terminal while somebody presses: its pads, the touch\n"
    "in progress and why the last ones became what they became. Of a recording the same,\n"
    "at its own pace or image by image. A device may be served at the same time: the first\n"
    "line says where the settings come from, which changes as its service begins or ends.\n"
    "\n"
    "Space pauses and goes on, left and right step by an image, page up and down by a\n"
    "second, up and down from touch to touch, home and end to the first and the newest;\n"
    "r shows raw values, s saves what was seen as a recording, q quits.";

struct ViewOptions {
    Watched watched;
    std::vector<Setting> settings;
    Bus::Which bus = Bus::Which::System;
    std::string output; // empty: a name with the time
};

// The recording's content in the order of time; the settings given take the place of its own.
void observe(Observation& observation, const std::string& file, const std::vector<Setting>& settings) {
    const PipelineRecording recording = loadRecording(file);
    const HostTime start(recording.frames().empty() ? 0 : recording.frames().front().timestampNs);
    for (const Setting& setting : settings) {
        if (auto frame = Bench::settingFrame(start, setting))
            observation.add(std::move(*frame));
    }
    for (const Frame& frame : recording.frames()) {
        const bool isLeftOut =
            frame.type == Frame::Type::State &&
            std::ranges::find(settings, Keys::pipelineKey(frame.key), &Setting::key) != settings.end();
        if (!isLeftOut)
            observation.add(frame);
    }
}

// The newest moment of a device. When the device has gone, what was seen of it stays; a failure ends the view.
class LiveView final : public View {
public:
    LiveView(LiveRun& live, Screen& screen, Observation& observation, const ViewOptions& options)
        : View(live.loop(), screen, observation, live.device().name(), options.output), _live(live) {}

    // Returns the handlers of what comes from the surface, for a view that is made before the run.
    [[nodiscard]] static Bench::LiveSurface::Handlers handlers(Observation& observation,
                                                               std::optional<LiveView>& view) {
        auto handlers = Bench::frameHandlers([&observation](const Frame& frame) { observation.add(frame); });
        handlers.batchEnd = [&view] { view->markChanged(); };
        handlers.gone = [&view](const std::string& failure) { view->end(failure); };
        return handlers;
    }

private:
    [[nodiscard]] std::size_t current() override { return lastMoment(); }
    [[nodiscard]] std::string settings() const override { return _live.settings().description(); }
    [[nodiscard]] std::string progress() const override { return "live"; }
    void goOn() override {
        if (!_hasGone)
            View::goOn();
    }

    void end(const std::string& failure) {
        _hasGone = true;
        if (!isPaused() && !failure.empty())
            return loop().stop();
        if (!isPaused())
            pause();
        say("the surface has gone");
    }

    bool _hasGone = false;
    const LiveRun& _live;
};

// A recording at its own pace.
class RecordingView final : public View {
public:
    RecordingView(EventLoop& loop, Screen& screen, Observation& observation, const ViewOptions& options)
        : View(loop, screen, observation, options.watched.name, options.output), _settings(options.settings.size()) {
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

int viewRecording(const ViewOptions& options, const std::string& file) {
    Observation observation(0);
    about(file, [&] { observe(observation, file, options.settings); });
    EventLoop loop;
    StopSignals signals(loop); // before the screen takes the terminal
    std::optional<Screen> screen(std::in_place);
    RecordingView view(loop, *screen, observation, options);
    signals.run({}, [&] { screen.reset(); });
    return 0;
}

int viewDevice(const ViewOptions& options, const DeviceChoice& choice) {
    LiveRun live(choice);
    Observation observation(kMaxRecordedFrames);
    std::optional<Screen> screen;
    std::optional<LiveView> view;
    live.read(options.bus, options.settings, LiveView::handlers(observation, view), LiveRun::WhenGone::Stay);
    live.takeSignals(); // before the screen takes the terminal
    about(live.subject(), [&] { screen.emplace(); });
    view.emplace(live, *screen, observation, options);
    about(live.subject(), [&] { live.run({}, [&] { screen.reset(); }); });
    return live.status();
}

int view(const ViewOptions& options) {
    warnOfDoubtfulSettings(options.settings);
    leaveOutColours(); // those of the library are others
    const DeviceChoice* device = options.watched.device();
    return device != nullptr ? viewDevice(options, *device)
                             : viewRecording(options, std::get<RecordedSurface>(options.watched.what).file);
}

} // namespace

Command makeViewCommand(App& program) {
    const auto options = std::make_shared<ViewOptions>();
    App* app =
        program.addCommand("view", {"velto view surface", "velto view sim", "velto view gestures.json"}, kViewText);
    addWatched(*app, options->watched, "A device, or a recording that exists; see below");
    addSettings(*app, options->settings, KeyScope::Pipeline, "Recognize with other settings than those in force");
    app->offer(app->add_option("-o", options->output, "Where s saves (default: a new file here, named after the time)"),
               fileNames())
        ->type_name("OUT");
    CLI::Option* bus = addBus(*app, options->bus);
    app->callback([options, bus] {
        if (options->watched.device() == nullptr)
            refuseBesideRecording({bus});
    });
    return {app, [options] { return view(*options); }};
}

} // namespace VeltoTouch::Velto
