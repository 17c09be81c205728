#include "Velto/Commands/LiveRun.h"

#include "Velto/Output/Terminal.h"

#include <utility>

namespace VeltoTouch::Velto {

int statusOfEnd(const std::string& device, const std::string& failure) {
    if (failure.empty())
        return 0;
    complain(device, failure);
    return 1;
}

LiveRun::LiveRun(const DeviceChoice& choice, double speed)
    : _subject(choice.subject()), _device(about(_subject, [&] { return connect(choice, speed); })) {}

void LiveRun::read(std::optional<Bus::Which> bus, std::vector<Bench::Setting> ofCommandLine,
                   Bench::LiveSurface::Handlers handlers, WhenGone whenGone) {
    handlers.gone = [this, whenGone, handler = std::move(handlers.gone)](const std::string& failure) {
        _failure = failure;
        handler(failure);
        if (whenGone == WhenGone::End)
            _loop.stop();
    };
    about(_subject, [&] { _surface.emplace(_loop, _device, bus, std::move(ofCommandLine), std::move(handlers)); });
}

void LiveRun::takeSignals() {
    if (!_signals)
        _signals.emplace(_loop);
}

void LiveRun::run(std::optional<std::chrono::microseconds> longest, const std::function<void()>& close) {
    takeSignals();
    _signals->run(longest, close);
}

} // namespace VeltoTouch::Velto
