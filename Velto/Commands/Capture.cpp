#include "Velto/Commands/Capture.h"

#include "Velto/Analysis/Counted.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Analysis::counted;
using Bench::Trouble;

std::string sizeText(std::uint64_t bytes) {
    const auto size = static_cast<double>(bytes);
    return size < 1e6   ? fmt::format("{:.0f} kB", size / 1e3)
           : size < 1e9 ? fmt::format("{:.1f} MB", size / 1e6)
                        : fmt::format("{:.2f} GB", size / 1e9);
}

std::unique_ptr<CaptureTarget> targetOf(const CaptureOptions& options, const Bench::TroubleWatch& watch) {
    if (options.on.empty())
        return std::make_unique<WholeCapture>(options.output);
    return std::make_unique<TroubleCapture>(TroubleCapture::Options{.folder = options.output,
                                                                    .beforeNs = options.before.count(),
                                                                    .afterNs = options.after.count(),
                                                                    .limit = options.limit},
                                            watch);
}

} // namespace

Capture::Capture(const CaptureOptions& options)
    : _options(options), _watch([this](Trouble trouble) { _troubles.push_back(trouble); }) {}

void Capture::begin() { _target = targetOf(_options, _watch); }

Bench::LiveSurface::Handlers Capture::handlers() {
    auto handlers = Bench::frameHandlers([this](const Frame& frame) { add(frame); });
    handlers.batchEnd = [this] { _target->write(); };
    return handlers;
}

std::string Capture::line() const {
    const auto seconds = static_cast<std::uint64_t>(duration().count());
    std::string text = fmt::format("{}:{:02}:{:02}  {}  {:.1f}/s  {}  {}", seconds / 3600, seconds / 60 % 60,
                                   seconds % 60, counted(_reports, "report"), rateHz(), sizeText(_target->size()),
                                   counted(_watch.count(Trouble::Gap), "gap"));
    if (const auto recordings = _target->recordings())
        text += "  " + counted(*recordings, "recording");
    return text;
}

std::string Capture::lines() const {
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

void Capture::add(const Frame& frame) {
    if (frame.type == Frame::Type::InputReport) {
        _last = HostTime(frame.timestampNs);
        _first = _reports++ == 0 ? _last : _first;
    }
    _watch.handle(frame);
    _target->add(frame);
    for (const Trouble trouble : std::exchange(_troubles, {})) {
        if (std::ranges::find(_options.on, trouble) != _options.on.end())
            _target->mark(trouble);
    }
}

double Capture::rateHz() const noexcept {
    return _last > _first ? static_cast<double>(_reports - 1) / duration().count() : 0;
}

} // namespace VeltoTouch::Velto
