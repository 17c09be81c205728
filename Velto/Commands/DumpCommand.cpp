#include "Plugin/Reports/FeatureReport.h"
#include "Plugin/Reports/Regions.h"
#include "Plugin/Shared/HexText.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/LiveRun.h"
#include "Velto/Options/DeviceOptions.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureText.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/FeatureReports.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch::Velto {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr const char* kDumpText =
    "Shows a device's reports, decoded and byte for byte: first its feature reports, then\n"
    "each input report as it comes. Of a recording, the input reports.\n"
    "\n"
    "With --hex, only lines that another velto reads as the device -:\n"
    "ssh there velto dump surface --hex | velto view -";

struct DumpOptions {
    Watched watched;
    std::optional<std::uint8_t> id; // none: all
    std::optional<std::chrono::microseconds> duration;
    bool hex = false;
    bool jsonl = false;

    [[nodiscard]] bool wants(Bytes report) const noexcept { return !id || (!report.empty() && report.front() == *id); }
};

std::string hexOf(Bytes report) {
    std::string text = Util::hexStringFromBytes(report);
    if (text.ends_with(' '))
        text.pop_back();
    return text;
}

template <class Values>
std::string padRow(std::string_view name, const Values& values) {
    std::string row = fmt::format("    {:<7}", name);
    for (const auto value : values)
        row += fmt::format("{:>7}", value);
    return row + "\n";
}

// Reports for people.
std::string textOf(HostTime time, Bytes report) {
    const std::string head = fmt::format("{:>12.6f} s  ", Seconds(time).count());
    const std::string tail = fmt::format("    {}\n", hexOf(report));
    if (const auto event = InputReport::FirmwareEvent::parse(report.data(), report.size()))
        return fmt::format("{}firmware event {}{}, context {:x}\n{}", head, event->event,
                           event->isReset() ? " (reset)" : "", event->contextNumber(), tail);
    if (const auto image = InputReport::Image::parse(report.data(), report.size())) {
        std::array<std::string_view, kPadCount> letters;
        for (std::size_t i = 0; i < kPadCount; ++i)
            letters[i] = letterOf(i);
        return fmt::format("{}image, frame {}, {} ms\n", head, image->frameNumber, image->timestampMs) +
               padRow("pad", letters) + padRow("signal", image->padSignal) + padRow("raw", image->padRaw) + tail;
    }
    return fmt::format("{}no report of the surface, {} bytes\n{}", head, report.size(), tail);
}

// And for programs.
std::string lineOf(const std::string& inFile, HostTime time, Bytes report) {
    const std::string head = fmt::format(R"({{"kind":"report"{},"ns":{},"id":{})", inFile, time.count(),
                                         report.empty() ? "null" : fmt::format("{}", report.front()));
    const std::string tail = fmt::format(R"(,"bytes":"{}"}})", hexOf(report)) + "\n";
    if (const auto event = InputReport::FirmwareEvent::parse(report.data(), report.size()))
        return head +
               fmt::format(R"(,"report":"firmwareEvent","event":{},"context":"{:x}")", event->event,
                           event->contextNumber()) +
               tail;
    if (const auto image = InputReport::Image::parse(report.data(), report.size()))
        return head +
               fmt::format(R"(,"report":"image","frame":{},"timeMs":{},"signal":[{}],"raw":[{}])", image->frameNumber,
                           image->timestampMs, fmt::join(image->padSignal, ","), fmt::join(image->padRaw, ",")) +
               tail;
    return head + R"(,"report":"invalid")" + tail;
}

// Input reports, one after the other; their times are from the first on, or with --hex as they are.
class Dump {
public:
    Dump(const DumpOptions& options, const std::string& file) : _options(options), _inFile(fileMember(file)) {}

    void add(HostTime time, Bytes report) {
        const HostTime start = _start.value_or(time);
        _start = start;
        if (!_options.wants(report))
            return;
        if (_options.hex)
            _text += fmt::format("{}.{:09}: {}\n", time.count() / 1'000'000'000, time.count() % 1'000'000'000,
                                 hexOf(report));
        else if (_options.jsonl)
            _text += lineOf(_inFile, time - std::min(time, start), report);
        else
            _text += textOf(time - std::min(time, start), report);
        if (_text.size() >= kFlushedFrom)
            flush();
    }
    void flush() { writeStandardOutput(std::exchange(_text, {})); }

private:
    const DumpOptions& _options;
    const std::string _inFile;
    std::optional<HostTime> _start;
    std::string _text;
};

std::string featureText(const Surface::FeatureReading& report) {
    const auto hold = FeatureReport::FactoryResetHoldDuration::parse(report.bytes.data(), report.bytes.size());
    return fmt::format("feature {:02x}  {}{}\n", report.id,
                       report.bytes.empty() ? "the device does not give it" : hexOf(report.bytes),
                       hold ? fmt::format("  (factory reset after holding for {} ms)", hold->holdDuration) : "");
}

std::string featureLine(const Surface::FeatureReading& report) {
    const auto hold = FeatureReport::FactoryResetHoldDuration::parse(report.bytes.data(), report.bytes.size());
    return fmt::format(R"({{"kind":"feature","id":{},"bytes":{}{}}})", report.id,
                       report.bytes.empty() ? "null" : '"' + hexOf(report.bytes) + '"',
                       hold ? fmt::format(R"(,"holdDurationMs":{})", hold->holdDuration) : "") +
           "\n";
}

// Nothing of a device that has none, such as a recording.
std::string featuresOf(const Surface::ConnectedDevice& device, const DumpOptions& options) {
    const std::vector<Surface::FeatureReading> reports = Surface::readFeatureReports(device.backend());
    std::string text;
    for (const Surface::FeatureReading& report : reports) {
        if (!options.id || report.id == *options.id)
            text += options.jsonl ? featureLine(report) : featureText(report);
    }
    const auto isGiven = [](const Surface::FeatureReading& report) { return !report.bytes.empty(); };
    return std::ranges::any_of(reports, isGiven) ? text : "";
}

int dumpRecording(const DumpOptions& options, const std::string& file) {
    return forEachFile({file}, [&](const std::string& path) {
        const PipelineRecording recording = loadRecording(path);
        Dump dump(options, path);
        for (const Frame& frame : recording.frames()) {
            if (frame.type == Frame::Type::InputReport)
                dump.add(HostTime(frame.timestampNs), frame.report);
        }
        dump.flush();
    });
}

int dumpDevice(const DumpOptions& options, const DeviceChoice& choice) {
    LiveRun live(choice);
    Dump dump(options, choice.file());
    live.read(
        std::nullopt, {},
        {.report = [&](HostTime time, Bytes report) { dump.add(time, report); }, .batchEnd = [&] { dump.flush(); }});
    const std::string features = options.hex ? "" : featuresOf(live.device(), options);
    live.takeSignals(); // before something is shown
    writeStandardOutput(features);
    live.run(options.duration);
    return live.status();
}

int dump(const DumpOptions& options) {
    const DeviceChoice* device = options.watched.device();
    return device != nullptr ? dumpDevice(options, *device)
                             : dumpRecording(options, std::get<RecordedSurface>(options.watched.what).file);
}

std::uint8_t parseID(const std::string& text) {
    const auto id = text.starts_with("0x") ? numberIn<std::uint8_t>(text.substr(2), 16) : numberIn<std::uint8_t>(text);
    if (!id)
        throw CLI::ValidationError("--report", "a number from 0 to 255 (0xff) is wanted");
    return *id;
}

} // namespace

Command makeDumpCommand(App& program) {
    const auto options = std::make_shared<DumpOptions>();
    App* app =
        program.addCommand("dump", {"velto dump surface", "velto dump gestures.json --report 2 --jsonl"}, kDumpText);
    addWatched(*app, options->watched, "A device, or a recording that exists; see below");
    app->add_option_function<std::string>(
           "--report", [options](const std::string& text) { options->id = parseID(text); }, "Only reports with this ID")
        ->type_name("ID");
    CLI::Option* duration = addDuration(*app, options->duration);
    duration->description("Of a device: end after so many seconds");
    CLI::Option* hex = app->add_flag("--hex", options->hex, "Lines for the device -: time and bytes");
    app->add_flag("--jsonl", options->jsonl, "JSON Lines, one a report")->excludes(hex);
    app->callback([options, duration] {
        if (options->watched.device() == nullptr)
            refuseBesideRecording({duration});
    });
    return {app, [options] { return dump(*options); }};
}

} // namespace VeltoTouch::Velto
