#include "Velto/Bench/LiveFrames.h"
#include "Velto/Bench/TroubleWatch.h"
#include "Velto/Commands/CaptureFiles.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/Hosting.h"
#include "Velto/Daemon/StopSignals.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <optional>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Bench::Trouble;

constexpr const char* kText =
    "Records a device for as long as you like, straight to a file, so that a crash or a power cut\n"
    "costs at most its last second. It is for sessions that outgrow what velto record and velto\n"
    "run --record keep, and for trouble that comes seldom. Velto serve may serve the device meanwhile.\n"
    "\n"
    "The file begins with the settings in force. It can be read at any time; should its end be cut\n"
    "off, velto recover saves the rest. What outgrows a reader (4 GiB, more than a day) goes on in\n"
    "OUT-2. Ends at the device's end, after --duration or with Ctrl-C.\n"
    "\n"
    "With --on it keeps only the time around trouble: recordings in the folder OUT, named after\n"
    "when (UTC) and why. Where their times overlap, they are one.";

constexpr std::chrono::milliseconds kBetweenSyncs{500};
constexpr std::chrono::milliseconds kBetweenLines{200};

struct Options {
    DeviceChoice device;
    std::string output;
    float speed = 1;
    std::optional<std::chrono::microseconds> duration; // none: without end
    std::vector<Trouble> on;                           // empty: everything is kept
    std::optional<double> before;
    std::optional<double> after;
    std::optional<std::uint64_t> limit;
    Bus::Which bus = Bus::Which::System;
};

std::string sizeText(std::uint64_t bytes) {
    const auto size = static_cast<double>(bytes);
    return size < 1e6   ? fmt::format("{:.0f} kB", size / 1e3)
           : size < 1e9 ? fmt::format("{:.1f} MB", size / 1e6)
                        : fmt::format("{:.2f} GB", size / 1e9);
}

std::unique_ptr<CaptureTarget> targetOf(const Options& options) {
    if (options.on.empty())
        return std::make_unique<WholeCapture>(options.output);
    const auto nanoseconds = [](double seconds) { return static_cast<std::uint64_t>(seconds * 1e9); };
    return std::make_unique<TroubleCapture>(
        TroubleCapture::Options{.folder = options.output,
                                .beforeNs = nanoseconds(options.before.value_or(10)),
                                .afterNs = nanoseconds(options.after.value_or(5)),
                                .limit = options.limit});
}

// One capture, from the first frame to the figures at the end.
class Capture {
public:
    explicit Capture(const Options& options)
        : _options(options), _watch([this](Trouble trouble) { _troubles.push_back(trouble); }),
          _target(targetOf(options)) {}

    [[nodiscard]] Bench::LiveSurface::Handlers handlers(EventLoop& loop) {
        auto handlers = Bench::frameHandlers([this](const Frame& frame) { add(frame); });
        handlers.batchEnd = [this] { _target->write(); };
        handlers.gone = [this, &loop](const std::string& failure) {
            _failure = failure;
            loop.stop();
        };
        return handlers;
    }

    void sync() { _target->sync(); }
    void finish() { _target->finish(); }
    [[nodiscard]] const std::string& failure() const noexcept { return _failure; } // of the device

    // For a line that the next one overwrites, and for the end.
    [[nodiscard]] std::string line() const {
        const auto seconds = static_cast<std::uint64_t>(duration().count());
        std::string text =
            fmt::format("{}:{:02}:{:02}  {} reports  {:.1f}/s  {}  {} gaps", seconds / 3600, seconds / 60 % 60,
                        seconds % 60, _reports, rateHz(), sizeText(_target->size()), _watch.count(Trouble::Gap));
        if (const auto recordings = _target->recordings())
            text += fmt::format("  {} recordings", *recordings);
        return text;
    }
    [[nodiscard]] std::string lines() const {
        std::string text = coloured(Colour::Bold, printable(_options.output)) + "\n";
        const auto add = [&text](std::string_view name, const std::string& value) {
            text += fmt::format("  {:<18} {}\n", name, value);
        };
        if (const auto recordings = _target->recordings())
            add("recordings", fmt::format("{}", *recordings));
        add("duration", fmt::format("{:.3f} s", duration().count()));
        add("reports", fmt::format("{} ({:.1f} a second)", _reports, rateHz()));
        add("size", sizeText(_target->size()));
        add("gaps", fmt::format("{}", _watch.count(Trouble::Gap)));
        add("firmware resets", fmt::format("{}", _watch.count(Trouble::Reset)));
        add("invalid reports", fmt::format("{}", _watch.count(Trouble::Invalid)));
        add("cancelled touches", fmt::format("{}", _watch.count(Trouble::Cancel)));
        return text;
    }

private:
    void add(const Frame& frame) {
        if (frame.type == Frame::Type::InputReport) {
            _last = HostTime(frame.timestampNs);
            _first = _reports++ == 0 ? _last : _first;
        }
        _target->add(frame);
        _watch.handle(frame);
        for (const Trouble trouble : std::exchange(_troubles, {})) {
            if (std::ranges::find(_options.on, trouble) != _options.on.end())
                _target->mark(trouble);
        }
    }
    [[nodiscard]] Seconds duration() const noexcept { return _last - _first; }
    [[nodiscard]] double rateHz() const noexcept {
        return _last > _first ? static_cast<double>(_reports - 1) / duration().count() : 0;
    }

    const Options& _options;
    std::vector<Trouble> _troubles; // of the frame in progress
    Bench::TroubleWatch _watch;
    const std::unique_ptr<CaptureTarget> _target;
    std::uint64_t _reports = 0;
    HostTime _first{};
    HostTime _last{};
    std::string _failure;
};

// Runs the work, and reports a failure in place of throwing it on. The exit status.
template <class Work>
int attempt(const Work& work) {
    try {
        work();
        return 0;
    } catch (const std::exception& error) {
        writeErrorLine(fmt::format("velto: {}", messageOf(error)));
        return 1;
    }
}

int capture(const Options& options) {
    EventLoop loop;
    const auto device =
        about(options.device.subject(), [&] { return connect(options.device, static_cast<double>(options.speed)); });
    StopSignals signals(loop); // before any thread
    Capture capture(options);
    std::optional<Bench::LiveSurface> surface;
    about(device.name(),
          [&] { surface.emplace(loop, device, options.bus, std::vector<Bench::Setting>(), capture.handlers(loop)); });
    loop.addTimer(kBetweenSyncs, [&] { capture.sync(); });
    const bool showsLine = standardOutputIsTerminal();
    if (showsLine)
        loop.addTimer(kBetweenLines, [&] { writeStandardOutput("\r\x1b[K" + capture.line()); });
    int status = attempt([&] { loop.run(options.duration); });
    signals.beginEnd();
    surface.reset();
    if (status == 0) // what is behind a failed write is not written either
        status = attempt([&] { capture.finish(); });
    if (!capture.failure().empty()) {
        complain(device.name(), capture.failure());
        status = 1;
    }
    writeStandardOutput((showsLine ? "\r\x1b[K" : "") + capture.lines());
    return status;
}

Trouble troubleNamed(const std::string& name) {
    const auto* const found = std::ranges::find(Bench::kTroubleNames, name);
    if (found == Bench::kTroubleNames.end())
        throw CLI::ValidationError("--on", fmt::format("\"{}\" is none of cancel, gap, reset, invalid", name));
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
    if (error != std::errc() || size == 0 || factor == 0 || size > std::uint64_t{1'000'000'000'000'000} / factor)
        throw CLI::ValidationError("--limit", "a number of bytes is wanted, such as 500M or 2G");
    return size * factor;
}

void addTroubleOptions(App& app, Options& options) {
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
           "take more than this together (500M, 2G)")
        ->type_name("SIZE")
        ->needs(on);
}

} // namespace

Command makeCaptureCommand(App& program) {
    const auto options = std::make_shared<Options>();
    App* app = program.addCommand("capture",
                                  {"velto capture surface -o evening.json",
                                   "velto capture surface --on cancel,gap --before 30 --limit 500M -o trouble/"},
                                  kText);
    addDeviceArgument(*app, options->device);
    CLI::Option* output =
        app->add_option("-o", options->output, "The recording, or with --on the folder of recordings");
    app->offer(output, fileNames())->type_name("OUT")->required()->check([](const std::string& path) {
        return isStandardOutput(path) ? "a file is wanted" : "";
    });
    addDuration(*app, options->duration);
    addTroubleOptions(*app, *options);
    addSpeed(*app, options->speed, "Pace of a device that is played: a factor on its own, or max (default: 1)");
    addBus(*app, options->bus);
    return {app, [options] { return capture(*options); }};
}

} // namespace VeltoTouch::Velto
