#include "Platform/Clock.h"
#include "Shared/Util.h"
#include "Tools/Command.h"
#include "Tools/Files.h"
#include "Tools/Hosting.h"
#include "Tools/KeyOptions.h"
#include "Tools/Keys.h"
#include "Tools/PlayOptions.h"
#include "Tools/RunOutput.h"
#include "Tools/Suggestion.h"

#include <memory>
#include <stdexcept>

namespace VeltoTouch::Tools {
namespace {

constexpr const char* kDescription = "Example:\n"
                                     "  velto run --duration 10\n"
                                     "  velto run --device sim:tap:play-pause,hold:volume-up --jsonl\n"
                                     "  velto run --device replay:gestures.json --record again.json\n\n"
                                     "Loads the touch service's plug-in, opens a device for it and shows the\n"
                                     "gestures as they come. Ends at the device's end, after --duration or with\n"
                                     "Ctrl-C.";

struct Options {
    DeviceChoice device;
    std::string plugIn; // empty: the program's own
    std::vector<Setting> settings;
    std::vector<std::string> properties; // to be read at the end
    float speed = 1;
    double durationSeconds = kForever;
    std::string recording; // where to save it; empty: nowhere
    bool jsonl = false;
};

// These give the exit status; the other keys are still seen to.
int writeSettings(const HostedService& service, const std::vector<Setting>& settings) {
    int status = 0;
    for (const Setting& setting : settings) {
        if (service.setProperty(setting.key, setting.value))
            continue;
        complain(setting.key, "the device does not take this value" + didYouMean(setting.key, writableKeys()));
        status = 1;
    }
    return status;
}

int readProperties(const HostedService& service, const std::vector<std::string>& keys,
                   std::vector<RunOutput::Property>& properties) {
    return forEachFile(keys, [&](const std::string& key) {
        Ref<Value> value = service.copyProperty(key);
        if (!value)
            throw std::runtime_error("there is no value under this key" + didYouMean(key, readableKeys()));
        properties.emplace_back(key, std::move(value));
    });
}

int saveRecording(const HostedService& service, const std::string& path) {
    return forEachFile({path}, [&](const std::string& file) {
        const Ref<Value> recording = service.copyProperty("Recording");
        if (as<String>(recording) == nullptr)
            throw std::runtime_error("the service gives no recording");
        writeFile(file, as<String>(recording)->text());
    });
}

int run(const Options& options) {
    warnOfDoubtfulSettings(options.settings);
    if (!options.recording.empty())
        about(options.recording, [&] { requireWritable(options.recording); });

    const auto loop = Ref<RunLoop>::retained(CFRunLoopGetCurrent());
    const auto endRun = [loop] { CFRunLoopStop(loop.get()); };
    const ConnectedDevice device = about(
        options.device.subject(), [&] { return ConnectedDevice(options.device, static_cast<double>(options.speed)); });
    StopSignals signals; // before any thread, and after the recording is read: until then a signal ends the program
    device.backend().removalHandler = endRun;

    const auto output = RunOutput::make(options.jsonl, options.device.name, endRun);
    std::uint64_t startTime = 0;
    const auto showEvent = [&](const Ref<HIDEvent>& event) {
        output->add(*event, Util::nanosecondsFromMachTime(IOHIDEventGetTimeStamp(event.get()) - startTime));
    };
    HostedService service = openService(options.plugIn, device, showEvent);
    int status = writeSettings(service, options.settings);

    output->begin();
    startTime = mach_absolute_time();
    service.schedule();
    waitForTheEnd(signals, options.durationSeconds);
    signals.beginEnd();

    RunOutput::Ending ending;
    status |= readProperties(service, options.properties, ending.properties);
    service.unschedule();
    ending.durationNs = Util::nanosecondsFromMachTime(mach_absolute_time() - startTime);
    ending.reports = device.backend().deliveredReports();
    ending.debugInfo = service.copyProperty("Pipeline.DebugInfo"); // with the last report and event
    ending.eventStats = service.copyProperty("Pipeline.Algs.EventStats");
    // With the last report, so that its replay gives all events that were shown.
    if (!options.recording.empty())
        status |= saveRecording(service, options.recording);
    service.stop();
    output->end(ending);
    return status;
}

} // namespace

Command makeRunCommand(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* app = program.add_subcommand("run", kDescription);
    addDevice(*app, options->device, "What to open; see below (default: sim)");
    addPlugIn(*app, options->plugIn);
    addSettings(*app, options->settings, KeyScope::Service, "Write properties of the service before the first report");
    addKeys(*app, options->properties, "Read properties of the service at the end and show them");
    addSpeed(*app, options->speed, "Pace: a factor on the device's own, or max (default: 1)");
    addDuration(*app, options->durationSeconds);
    app->add_option("--record", options->recording, "Save the service's recording at the end")
        ->type_name("OUT")
        ->check([](const std::string& path) { return path.empty() || path == "-" ? "a file is wanted" : ""; });
    app->add_flag("--jsonl", options->jsonl, "JSON Lines: events as they happen, then properties and a summary");
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Tools
