#include "Velto/Commands/Capture.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/LiveRun.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/DeviceOptions.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <optional>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Bench::Trouble;

constexpr const char* kCaptureText =
    "Records a device for as long as you like, straight to a file. A crash or a power cut costs at\n"
    "most its last second. It is for sessions that outgrow what velto record and velto\n"
    "run --record keep, and for trouble that comes seldom. The device may be served (velto serve) at\n"
    "the same time.\n"
    "\n"
    "The file begins with the settings in force that a service or the configuration gives. It can\n"
    "be read at any time; should its end be cut off, velto recover saves the rest. What outgrows a\n"
    "reader (4 GiB, more than a day) goes on in OUT-2. Ends at the device's end, after --duration or\n"
    "with Ctrl-C.\n"
    "\n"
    "With --on it keeps only the time around trouble: recordings in the folder OUT, named after\n"
    "when (UTC) and why. Where their times overlap, they are one. A touch is kept whole. For a\n"
    "cancelled touch, --before counts from the touch's beginning. Earlier touches that its decision\n"
    "depends on are kept too, so that velto explain shows what was decided live. What lies more\n"
    "than ten minutes further back is not kept.\n"
    "\n"
    "Several captures may keep recordings in one folder, but none beside one with --limit.";

constexpr std::chrono::milliseconds kBetweenLines{200};
constexpr std::uint64_t kLeastLimit = 1'000'000; // some 30 s of reports

// Runs the work, and reports a failure in place of throwing it on. The exit status.
template <class Work>
int attempt(const Work& work) {
    try {
        work();
        return 0;
    } catch (const ClosedPipe&) { // the last write to the standard output reports it
        return 0;
    } catch (const std::exception& error) {
        writeErrorLine(fmt::format("velto: {}", messageOf(error)));
        return 1;
    }
}

int captureWith(const CaptureOptions& options) {
    requireOtherFile(options.device, options.output);
    LiveRun live(options.device, static_cast<double>(options.speed));
    Capture capture(options);
    live.read(options.bus, {}, capture.handlers());
    live.takeSignals();
    capture.begin(); // an old recording stays if there is no device
    live.loop().addTimer(Files::GrowingRecording::kBetweenSyncs, [&] { capture.sync(); });
    const bool showsLine = standardOutputIsTerminal();
    if (showsLine)
        live.loop().addTimer(kBetweenLines, [&] { writeStandardOutput(kWipedLine + onOneRow(capture.line())); });
    int status = attempt([&] { live.run(options.duration); });
    if (status == 0) // what is behind a failed write is not written either
        status = attempt([&] { capture.finish(); });
    status = std::max(status, live.status());
    writeStandardOutput((showsLine ? kWipedLine : "") + capture.lines());
    return status;
}

Trouble troubleNamed(const std::string& name) {
    const auto* const found = std::ranges::find(Bench::kTroubleNames, name);
    if (found == Bench::kTroubleNames.end())
        throw CLI::ValidationError("--on",
                                   fmt::format("\"{}\" is none of {}", name, fmt::join(Bench::kTroubleNames, ", ")));
    return static_cast<Trouble>(found - Bench::kTroubleNames.begin());
}

// A number of bytes, or of thousands, millions or thousands of millions of them.
std::uint64_t parseSize(const std::string& text) {
    std::uint64_t size = 0;
    const char* const end = text.data() + text.size();
    const auto [unit, error] = std::from_chars(text.data(), end, size);
    static constexpr std::string_view kUnits = "kMG";
    std::uint64_t factor = unit == end ? 1 : 0;
    if (end - unit == 1 && kUnits.find(*unit) != std::string_view::npos)
        factor = static_cast<std::uint64_t>(std::pow(1000, kUnits.find(*unit) + 1));
    if (error != std::errc() || factor == 0 || size > std::uint64_t{1'000'000'000'000'000} / factor ||
        size * factor < kLeastLimit)
        throw CLI::ValidationError("--limit", "a number of bytes is wanted, such as 500M or 2G, at least 1M");
    return size * factor;
}

void addTroubleOptions(App& app, CaptureOptions& options) {
    const auto parse = [&options](const std::vector<std::string>& names) {
        for (const std::string& name : names)
            options.on.push_back(troubleNamed(name));
    };
    CLI::Option* on = app.add_option_function<std::vector<std::string>>(
        "--on", parse,
        "Keep the time around each cancelled touch (cancel), gap in the frame numbers (gap), restart of the firmware "
        "(reset), report that is none (invalid); several with commas between");
    on->delimiter(',')->allow_extra_args(false)->type_name("CAUSE,...");
    app.offer(on, {.words = {Bench::kTroubleNames.begin(), Bench::kTroubleNames.end()},
                   .openings = {},
                   .filePrefixes = {},
                   .patterns = {}});
    addSeconds(app, "--before", options.before, "With --on: keep so many seconds before it (default: 10)")->needs(on);
    addSeconds(app, "--after", options.after, "With --on: keep so many seconds after it (default: 5)")->needs(on);
    app.add_option_function<std::string>(
           "--limit", [&options](const std::string& text) { options.limit = parseSize(text); },
           "With --on: delete the oldest recordings of this kind in the folder, those of earlier runs too, when they "
           "take more than this together (500M, 2G; at least 1M)")
        ->type_name("SIZE")
        ->needs(on);
}

} // namespace

Command makeCaptureCommand(App& program) {
    const auto options = std::make_shared<CaptureOptions>();
    App* app = program.addCommand("capture",
                                  {"velto capture surface -o evening.json",
                                   "velto capture surface --on cancel,gap --before 30 --limit 500M -o trouble/"},
                                  kCaptureText);
    addDeviceArgument(*app, options->device);
    addOutputFile(*app, options->output, "The recording, or with --on the folder of recordings");
    addDuration(*app, options->duration);
    addTroubleOptions(*app, *options);
    addSpeed(*app, options->speed, "Pace of a device that is played: a factor on its own, or max (default: 1)");
    addBus(*app, options->bus);
    return {app, [options] { return captureWith(*options); }};
}

} // namespace VeltoTouch::Velto
