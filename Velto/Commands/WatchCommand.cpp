#include "Velto/Commands/Command.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Daemon/StopSignals.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureText.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kWatchText = "Shows the gestures on a surface that velto serve serves, as they come. Ends when\n"
                                   "the surface goes, after --duration or with Ctrl-C.";

struct WatchOptions {
    ServedChoice served;
    std::optional<std::chrono::microseconds> duration; // none: without end
    bool jsonl = false;
};

// If the standard output fails, the handler throws and the loop's `run` rethrows it.
void showOn(EventLoop& loop, Bus::Client& client, GestureText& gestures) {
    const HostTime start = hostTimeNow();
    writeStandardOutput(gestures.heading());
    const auto show = [&gestures, start](Gesture gesture) {
        gesture.time = std::max(gesture.time, start) - start;
        std::string text;
        gestures.add(text, gesture);
        writeStandardOutput(text);
    };
    client.watch(loop, show, [&loop] { loop.stop(); });
}

int watch(const WatchOptions& options) {
    Bus::Client client(options.served.bus, options.served.device);
    EventLoop loop;
    StopSignals signals(loop); // before something is shown
    const auto gestures = options.jsonl ? GestureText::gestureLines() : GestureText::table("", false);
    showOn(loop, client, *gestures);
    signals.run(options.duration);
    return 0;
}

} // namespace

Command makeWatchCommand(App& program) {
    const auto options = std::make_shared<WatchOptions>();
    App* app =
        program.addCommand("watch", {"velto watch --duration 60", "velto watch --jsonl | jq -r .gesture"}, kWatchText);
    addServed(*app, options->served);
    addDuration(*app, options->duration);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines, one an event");
    return {app, [options] { return watch(*options); }};
}

} // namespace VeltoTouch::Velto
