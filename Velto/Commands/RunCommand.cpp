#include "Plugin/Pipeline/Properties.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Plugin/Shared/Keys.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/LiveRun.h"
#include "Velto/Commands/PlugIn.h"
#include "Velto/Commands/RunOutput.h"
#include "Velto/Commands/ServiceRecording.h"
#include "Velto/Options/DeviceOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Keys.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Options/Suggestion.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <stdexcept>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kRunText = "Loads the plug-in, opens a device for it and shows the gestures as they\n"
                                 "come. Ends at the device's end, after --duration or with\n"
                                 "Ctrl-C.\n"
                                 "\n"
                                 "--record is for a look at what a run has just shown, with velto explain, score\n"
                                 "and stats; velto capture records without a bound.";

struct RunOptions {
    DeviceChoice device;
    std::string plugIn; // empty: the program's own
    std::vector<Setting> settings;
    std::vector<std::string> properties; // to be read at the end
    float speed = 1;
    std::optional<std::chrono::microseconds> duration; // none: without end
    std::string recording;                             // where to save it; empty: nowhere
    bool jsonl = false;
};

// Return 1 if a property was refused; the others are still read or written.
int writeSettings(const HostedService& service, const std::vector<Setting>& settings) {
    int status = 0;
    for (const Setting& setting : settings) {
        if (service.setProperty(setting.key, setting.value))
            continue;
        complain(setting.key, kValueNotTaken + didYouMean(setting.key, writableKeys()));
        status = 1;
    }
    return status;
}

int readProperties(const HostedService& service, const std::vector<std::string>& keys,
                   std::vector<RunOutput::Property>& properties) {
    return forEachFile(keys, [&](const std::string& key) {
        Ref<Value> value = service.copyProperty(key);
        if (!value)
            throw std::runtime_error(kNoValue + didYouMean(key, readableKeys()));
        properties.emplace_back(key, std::move(value));
    });
}

void warnOfLostPauses(const RunOptions& options) {
    if (options.device.isPlayed() && std::isinf(options.speed))
        complain(options.recording, "at --speed max reports come without pauses, and the recording has none either");
}

// Saves what the service has recorded of so many reports since the start. The exit status.
int saveRun(const HostedService& service, const std::string& path, std::uint64_t reports, HostTime start) {
    return forEachFile({path}, [&](const std::string& file) {
        const RecordedExtent kept = saveRecording(service.copyProperty(std::string(Keys::kRecording)), file);
        if (reports <= kept.reports)
            return;
        const HostTime lost = std::max(kept.firstReport, start) - start;
        complain(file, fmt::format("the recording holds the newest {:.1f} s; the first {:.1f} s ({} reports) were "
                                   "dropped",
                                   kept.seconds(), Seconds(lost).count(), reports - kept.reports));
    });
}

int run(const RunOptions& options) {
    warnOfDoubtfulSettings(options.settings);
    if (!options.recording.empty()) {
        about(options.recording, [&] { requireWritable(options.recording); });
        warnOfLostPauses(options);
    }

    LiveRun live(options.device, static_cast<double>(options.speed));
    const Surface::ConnectedDevice& device = live.device();
    const auto endRun = [&loop = live.loop()] { loop.stop(); };
    device.backend().removalHandler = endRun;

    RunOutput output(options.jsonl, options.device, endRun);
    HostTime start{};
    const auto show = [&](Gesture gesture) {
        gesture.time -= start;
        output.add(gesture);
    };
    HostedService service = openService(options.plugIn, device, show);
    int status = writeSettings(service, options.settings);

    live.takeSignals(); // before something is shown
    output.begin();
    start = hostTimeNow();
    service.schedule();
    live.run(options.duration);

    RunOutput::Ending ending;
    status |= readProperties(service, options.properties, ending.properties);
    service.unschedule();
    ending.duration = hostTimeNow() - start;
    ending.reports = device.backend().deliveredReports();
    ending.debugInfo = service.copyProperty(std::string(Keys::kDebugInfo)); // with the last report and event
    ending.eventStats = service.copyProperty(std::string(Keys::kEventStats));
    // With the last report, so that its replay gives all events that were shown.
    if (!options.recording.empty())
        status |= saveRun(service, options.recording, ending.reports, start);
    service.stop();
    output.end(ending);
    return status | statusOfEnd(live.subject(), device.backend().failure());
}

} // namespace

Command makeRunCommand(App& program) {
    const auto options = std::make_shared<RunOptions>();
    App* app =
        program.addCommand("run",
                           {"velto run --duration 10", "velto run --device sim:tap:play-pause,hold:volume-up --jsonl",
                            "velto run --device replay:gestures.json --record again.json"},
                           kRunText);
    addDevice(*app, options->device, "What to open; see below (default: sim)");
    addPlugIn(*app, options->plugIn);
    addSettings(*app, options->settings, KeyScope::Service, "Write properties of the service before the first report");
    addKeys(*app, options->properties, "Read properties of the service at the end and show them");
    addSpeed(*app, options->speed, "Pace: a factor on the device's own, or max (default: 1)");
    addDuration(*app, options->duration);
    CLI::Option* record = app->add_option(
        "--record", options->recording,
        fmt::format("Save the service's recording at the end: the newest {} reports and accelerometer samples",
                    kMaxRecordedFrames));
    app->offer(record, fileNames())->type_name("OUT")->check([](const std::string& path) {
        return isStandardOutput(path) ? "a file is wanted" : "";
    });
    app->add_flag("--jsonl", options->jsonl, "JSON Lines: events as they happen, then properties and a summary");
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Velto
