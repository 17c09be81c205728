#include "Plugin/Reports/Regions.h"
#include "Velto/Analysis/LineMembers.h"
#include "Velto/Analysis/StreamStatistics.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/Disturbances.h"
#include "Velto/Commands/LiveStats.h"
#include "Velto/Commands/PadText.h"
#include "Velto/Files/Reading.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/DeviceOptions.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureText.h"
#include "Velto/Output/Progress.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/ReportStream.h"

#include <algorithm>
#include <filesystem>
#include <list>
#include <memory>

#include <fmt/format.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

using Analysis::StreamStatistics;
using Kind = Disturbance::Kind;
using Stretch = StreamStatistics::Intervals;

struct StatsOptions {
    std::vector<std::string> paths;
    Bus::Which bus = Bus::Which::System;
    std::optional<std::chrono::microseconds> duration;
    bool jsonl = false;
};

// A recording and what is shown of it, which refers to its reports.
struct Shown {
    explicit Shown(std::string path) : file(std::move(path)), recording(loadRecording(file)) {
        Progress progress("replaying " + file, recording.frames().size());
        statistics =
            Analysis::statisticsOf(recording, [&, played = std::uint64_t{0}]() mutable { progress.update(++played); });
    }

    std::string file;
    PipelineRecording recording;
    StreamStatistics statistics;
};

double msOf(std::uint64_t ns) { return static_cast<double>(ns) / 1e6; }

// Lines for programs.

std::string streamLine(const std::string& inFile, const StreamStatistics& statistics) {
    const auto ms = [&statistics](std::uint64_t Stretch::*which) {
        return statistics.intervals ? fmt::format("{}", msOf(*statistics.intervals.*which)) : "null";
    };
    return fmt::format(R"({{"kind":"stream"{},"reports":{},"rateHz":{},)"
                       R"("intervalMs":{{"median":{},"p99":{},"longest":{}}}}})"
                       "\n",
                       inFile, statistics.reports, Analysis::orNull(statistics.rateHz), ms(&Stretch::median),
                       ms(&Stretch::p99), ms(&Stretch::longest));
}

std::string disturbanceLine(const std::string& inFile, const Disturbance& disturbance) {
    std::string members;
    if (disturbance.kind == Kind::Gap)
        members = fmt::format(R"(,"from":{},"to":{})", *disturbance.lastFrame, disturbance.frame);
    else if (disturbance.kind == Kind::InvalidReport)
        members = fmt::format(R"(,"length":{},"id":{})", disturbance.report.size(),
                              disturbance.report.empty() ? "null" : fmt::format("{}", disturbance.report.front()));
    return fmt::format(R"({{"kind":"{}"{},"ns":{}{}}})"
                       "\n",
                       nameOf(disturbance.kind), inFile, disturbance.time.count(), members);
}

std::string asLines(const Shown& shown) {
    const std::string inFile = fileMember(shown.file);
    const StreamStatistics& statistics = shown.statistics;
    std::string text = streamLine(inFile, statistics);
    for (const Disturbance& disturbance : statistics.disturbances)
        text += disturbanceLine(inFile, disturbance);
    for (std::size_t i = 0; i < kPadCount; ++i)
        text += fmt::format(R"({{"kind":"pad"{},{}}})"
                            "\n",
                            inFile, padMembers(i, statistics.pads[i]));
    return text;
}

// Text for people: a column a recording, one or two.

// The widths of the three columns of a recording's pads, which its other numbers stand below each other with.
constexpr int kColumn = 27;

class Columns {
public:
    explicit Columns(const std::list<Shown>& shown) : _shown(shown) {}

    // A row; `show` makes the cell of a recording.
    template <class Show>
    void row(std::string_view name, Show show) {
        _text += fmt::format("  {:<18}", name);
        for (const Shown& recording : _shown)
            _text += fmt::format("{:>{}}", show(recording.statistics), kColumn);
        _text += '\n';
    }
    void line(const std::string& text) { _text += fmt::format("      {}\n", text); }

    [[nodiscard]] const std::string& text() const noexcept { return _text; }

private:
    const std::list<Shown>& _shown;
    std::string _text;
};

void addStream(Columns& columns) {
    columns.row("reports", [](const auto& recording) { return fmt::format("{}", recording.reports); });
    columns.row("rate", [](const auto& recording) {
        return recording.rateHz ? fmt::format("{:.2f} Hz", *recording.rateHz) : "-";
    });
    const auto interval = [&columns](std::string_view name, std::uint64_t Stretch::*which) {
        columns.row(name, [which](const auto& recording) {
            return recording.intervals ? fmt::format("{:.3f} ms", msOf(*recording.intervals.*which)) : "-";
        });
    };
    interval("interval, median", &Stretch::median);
    interval("interval, 99 %", &Stretch::p99);
    interval("interval, longest", &Stretch::longest);
}

void addPads(Columns& columns) {
    columns.row("pad", [](const auto&) { return padHeading(); });
    for (std::size_t i = 0; i < kPadCount; ++i)
        columns.row(letterOf(i), [i](const auto& recording) { return padCells(recording.pads[i]); });
}

// The first of each kind are listed of a single recording.
void addDisturbances(Columns& columns, const std::list<Shown>& shown) {
    Disturbances lines;
    if (shown.size() == 1) {
        for (const Disturbance& disturbance : shown.front().statistics.disturbances)
            lines.add(disturbance);
    }
    const auto disturbances = [&](std::string_view name, Kind kind) {
        columns.row(name, [kind](const auto& recording) {
            return fmt::format("{}", std::ranges::count(recording.disturbances, kind, &Disturbance::kind));
        });
        for (const std::string& line : lines.lines(kind))
            columns.line(line);
    };
    disturbances("gaps", Kind::Gap);
    disturbances("firmware resets", Kind::Reset);
    disturbances("invalid reports", Kind::InvalidReport);
}

// Two recordings stand side by side, below their numbers on the command line.
std::string asText(const std::list<Shown>& shown) {
    std::string heading;
    for (const Shown& recording : shown)
        heading += (shown.size() == 1 ? "" : fmt::format("{}  ", &recording == &shown.front() ? 1 : 2)) +
                   coloured(Colour::Bold, printable(recording.file)) + "\n";
    Columns columns(shown);
    if (shown.size() > 1)
        columns.row("", [&](const auto& one) { return &one == &shown.front().statistics ? "1" : "2"; });
    addStream(columns);
    addDisturbances(columns, shown);
    addPads(columns);
    return heading + columns.text();
}

bool areTwoRecordings(const std::vector<std::string>& paths) {
    std::error_code ignored;
    return paths.size() == 2 &&
           std::ranges::none_of(paths, [&](const auto& path) { return std::filesystem::is_directory(path, ignored); });
}

bool standardInputHasReports() {
    const std::optional<char> first = Files::nextByteOf(STDIN_FILENO);
    return first && Surface::ReportStream::mayBeginWith(*first);
}

// A path that does not exist may be a device; - is a recording or reports.
std::optional<DeviceChoice> deviceOf(const std::vector<std::string>& paths) {
    try {
        if (paths.size() != 1 || (paths.front() == "-" && !standardInputHasReports()))
            return std::nullopt;
        const Watched watched = parseWatched(paths.front());
        return watched.device() == nullptr ? std::nullopt : std::optional(*watched.device());
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

// Whether they are recordings, as far as that is seen without reading.
bool areRecordings(const std::vector<std::string>& paths) {
    std::error_code ignored;
    return paths.size() > 1 ||
           (std::filesystem::exists(paths.front(), ignored) && parseWatched(paths.front()).device() == nullptr);
}

int show(const StatsOptions& options) {
    if (const auto device = deviceOf(options.paths))
        return showLiveStats(
            {.device = *device, .bus = options.bus, .duration = options.duration, .jsonl = options.jsonl});
    const bool isPair = !options.jsonl && areTwoRecordings(options.paths);
    std::list<Shown> shown; // what waits to be written
    const int status = forEachRecording(options.paths, "replaying", [&](const std::string& file) {
        shown.emplace_back(file);
        if (isPair)
            return;
        writeStandardOutput(options.jsonl ? asLines(shown.front()) : asText(shown));
        shown.clear();
    });
    if (!shown.empty())
        writeStandardOutput(asText(shown));
    return status;
}

} // namespace

Command makeStatsCommand(App& program) {
    const auto options = std::make_shared<StatsOptions>();
    App* app = program.addCommand(
        "stats",
        {"velto stats gestures.json", "velto stats before.json after.json", "velto stats surface --duration 60"},
        "Measures how recordings came to be: rate of the reports and the times between them,\n"
        "gaps, firmware resets, invalid reports, and each pad's baseline, noise and peak.\n"
        "Two recordings are shown side by side.\n"
        "\n"
        "With a device in place of recordings, the same of its reports as they come, and\n"
        "how long it takes from reading a report to an event. The standard input, -, is a\n"
        "recording or reports (lines of velto dump --hex), whichever it begins as.");
    addRecordings(*app, options->paths);
    CLI::Option* bus = addBus(*app, options->bus);
    CLI::Option* duration = addDuration(*app, options->duration);
    duration->description("Of a device: end after so many seconds");
    app->add_flag("--jsonl", options->jsonl,
                  "JSON Lines: one for the reports, one a disturbance, one a pad; of a device one a second");
    app->callback([options, bus, duration] {
        if (areRecordings(options->paths))
            refuseBesideRecording({duration, bus});
    });
    return {app, [options] { return show(*options); }};
}

} // namespace VeltoTouch::Velto
