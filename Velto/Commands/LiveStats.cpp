#include "Velto/Commands/LiveStats.h"

#include "Plugin/Reports/Regions.h"
#include "Velto/Analysis/LineMembers.h"
#include "Velto/Analysis/NearestRank.h"
#include "Velto/Analysis/PadStatistics.h"
#include "Velto/Bench/LiveFrames.h"
#include "Velto/Bench/LiveRecognition.h"
#include "Velto/Commands/LiveRun.h"
#include "Velto/Commands/PadText.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureText.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <deque>
#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace std::chrono_literals;

// Lines of the left text with those of the right behind them. No left line is wider than the first.
std::string beside(const std::string& left, const std::string& right) {
    std::istringstream leftLines(left);
    std::istringstream rightLines(right);
    const std::size_t width = left.find('\n');
    std::string text;
    for (std::string one, other;;) {
        const bool isLeft = static_cast<bool>(std::getline(leftLines, one));
        if (!std::getline(rightLines, other) && !isLeft)
            return text;
        text += fmt::format("{:<{}}{}\n", one, width, other);
    }
}

constexpr std::size_t kMostSpans = 10'000; // that figures are made of; the longest is of all

// Spans of time, the newest of them kept.
class Spans {
public:
    void add(std::uint64_t ns) {
        ++_count;
        _longest = std::max(_longest, ns);
        _newest.push_back(ns);
        if (_newest.size() > kMostSpans)
            _newest.pop_front();
    }

    struct Figures {
        double median, p99, longest, deviation; // ms
    };
    [[nodiscard]] std::uint64_t count() const noexcept { return _count; }
    [[nodiscard]] std::optional<Figures> figures() const {
        if (_newest.empty())
            return std::nullopt;
        std::vector<std::uint64_t> spans(_newest.begin(), _newest.end());
        double sum = 0;
        double squares = 0;
        for (const std::uint64_t span : spans) {
            sum += msOf(span);
            squares += msOf(span) * msOf(span);
        }
        const auto count = static_cast<double>(spans.size());
        const double mean = sum / count;
        return Figures{.median = msOf(Analysis::nearestRank(spans, 50)),
                       .p99 = msOf(Analysis::nearestRank(spans, 99)),
                       .longest = msOf(_longest),
                       .deviation = std::sqrt(std::max(0.0, squares / count - mean * mean))};
    }

private:
    static double msOf(std::uint64_t ns) noexcept { return static_cast<double>(ns) / 1e6; }

    std::deque<std::uint64_t> _newest;
    std::uint64_t _count = 0;
    std::uint64_t _longest = 0;
};

// What is measured of a surface.
class LiveStats {
public:
    // `isPiped`: reports have the times of another clock, and how late an event is cannot be known.
    explicit LiveStats(bool isPiped) : _isPiped(isPiped) {}

    void add(const Frame& frame) {
        const HostTime time(frame.timestampNs);
        if (frame.type == Frame::Type::InputReport)
            count(time);
        const Bench::LiveRecognition::Seen& seen = _recognition.handle(frame);
        if (!seen.gestures.empty())
            countEvents(time);
        if (!seen.step || seen.step->kind != Analysis::Track::Step::Kind::Image)
            return;
        for (std::size_t i = 0; i < kPadCount; ++i)
            _pads[i].add(seen.step->image.padSignal[i], !_recognition.algs().handStats.touching);
    }

    // The pads stand below the rest, or beside it where rows are few.
    [[nodiscard]] std::string text(bool isBeside) const {
        return isBeside ? beside(streamRows(), padRows(kNarrow)) : streamRows() + padRows(kWide);
    }

    // `ns`: since the start.
    [[nodiscard]] std::string line(const std::string& inFile, std::uint64_t ns) const {
        std::vector<std::string> pads;
        for (std::size_t i = 0; i < kPadCount; ++i)
            pads.push_back(fmt::format("{{{}}}", padMembers(i, _pads[i])));
        return fmt::format(R"({{"kind":"stream"{},"ns":{},"reports":{},"rateHz":{},"intervalMs":{},"jitterMs":{},)"
                           R"("events":{},"latencyMs":{},"gaps":{},"resets":{},"invalid":{},"pads":[{}]}})"
                           "\n",
                           inFile, ns, _reports, Analysis::orNull(rateHz()), spansLine(_intervals.figures()),
                           _intervals.count() == 0 ? "null" : fmt::format("{}", _intervals.figures()->deviation),
                           _events, spansLine(_latencies.figures()), _recognition.gaps(), _recognition.resets(),
                           _recognition.invalidReports(), fmt::join(pads, ","));
    }

private:
    // The widths of a pad's name: beside the rest within 80 columns, and below it.
    static constexpr int kNarrow = 4;
    static constexpr int kWide = 18;

    void count(HostTime time) {
        ++_reports;
        if (_lastTime)
            _intervals.add((time - std::min(time, *_lastTime)).count());
        _firstTime = _firstTime.value_or(time);
        _lastTime = time;
    }
    // The events of a report that was read at `time`.
    void countEvents(HostTime time) {
        ++_events;
        const HostTime now = hostTimeNow();
        if (!_isPiped)
            _latencies.add((now - std::min(now, time)).count());
    }
    [[nodiscard]] std::string streamRows() const {
        std::string text =
            row("reports", fmt::format("{}", _reports)) + row("rate", number(rateHz(), "{:.2f} Hz")) +
            spans("interval", _intervals.figures()) +
            row("jitter", _intervals.count() == 0 ? "-" : fmt::format("{:.3f} ms", _intervals.figures()->deviation)) +
            row("events", fmt::format("{}", _events)) + spans("report to event", _latencies.figures());
        return text + row("gaps", fmt::format("{}", _recognition.gaps())) +
               row("firmware resets", fmt::format("{}", _recognition.resets())) +
               row("invalid reports", fmt::format("{}", _recognition.invalidReports()));
    }
    [[nodiscard]] std::string padRows(int nameWidth) const {
        std::string text = fmt::format("  {:<{}}{}\n", "pad", nameWidth, padHeading());
        for (std::size_t i = 0; i < kPadCount; ++i)
            text += fmt::format("  {:<{}}{}\n", letterOf(i), nameWidth, padCells(_pads[i]));
        return text;
    }
    // Of all reports.
    [[nodiscard]] std::optional<double> rateHz() const {
        if (!_firstTime || !(*_lastTime > *_firstTime))
            return std::nullopt;
        return static_cast<double>(_reports - 1) / Seconds(*_lastTime - *_firstTime).count();
    }
    static std::string number(std::optional<double> value, const char* format) {
        return value ? fmt::format(fmt::runtime(format), *value) : "-";
    }
    static std::string row(std::string_view name, const std::string& value) {
        return fmt::format("  {:<26}{:>14}\n", name, value);
    }
    static std::string spans(std::string_view name, const std::optional<Spans::Figures>& figures) {
        std::string text;
        const auto add = [&](std::string_view which, double Spans::Figures::*figure) {
            text += row(fmt::format("{}, {}", name, which), figures ? fmt::format("{:.3f} ms", *figures.*figure) : "-");
        };
        add("median", &Spans::Figures::median);
        add("99 %", &Spans::Figures::p99);
        add("longest", &Spans::Figures::longest);
        return text;
    }
    static std::string spansLine(const std::optional<Spans::Figures>& figures) {
        return figures ? fmt::format(R"({{"median":{},"p99":{},"longest":{}}})", figures->median, figures->p99,
                                     figures->longest)
                       : "null";
    }

    const bool _isPiped;
    Bench::LiveRecognition _recognition;
    std::uint64_t _reports = 0;
    std::uint64_t _events = 0;
    std::optional<HostTime> _firstTime;
    std::optional<HostTime> _lastTime;
    Spans _intervals;
    Spans _latencies; // from a report to an event that it gave
    std::array<Analysis::PadStatistics, kPadCount> _pads;
};

// The block is written over the one before.
class Block {
public:
    void show(const std::string& text) {
        const std::string back = _rows == 0 ? "" : fmt::format("\x1b[{}A", _rows);
        std::string shown = back;
        _rows = 0;
        for (std::size_t begin = 0; begin < text.size(); ++_rows) {
            const std::size_t end = text.find('\n', begin);
            shown += "\x1b[K" + onOneRow(std::string_view(text).substr(begin, end - begin)) + "\n";
            begin = end + 1;
        }
        writeStandardOutput(shown);
    }

private:
    std::size_t _rows = 0;
};

} // namespace

int showLiveStats(const LiveStatsOptions& options) {
    LiveRun live(options.device);
    LiveStats stats(std::holds_alternative<PipedSurface>(options.device.surface));
    live.read(options.bus, {}, Bench::frameHandlers([&](const Frame& frame) { stats.add(frame); }));
    const HostTime start = hostTimeNow();
    const auto heading = [&] {
        return fmt::format("{}   settings: {}\n", printable(options.device.name), live.settings().description());
    };
    Block block;
    const auto show = [&] {
        if (options.jsonl)
            writeStandardOutput(stats.line(fileMember(options.device.file()), (hostTimeNow() - start).count()));
        else
            block.show(heading() + stats.text(true));
    };
    const bool isRefreshed = options.jsonl || standardOutputIsTerminal();
    if (isRefreshed)
        live.loop().addTimer(1s, show);
    live.run(options.duration);
    isRefreshed ? show() : writeStandardOutput(heading() + stats.text(false));
    return live.status();
}

} // namespace VeltoTouch::Velto
