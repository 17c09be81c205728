#include "Velto/Bench/LiveSurface.h"

#include "Plugin/Recording/Damage.h"
#include "Plugin/Shared/Overloaded.h"

#include <utility>

namespace VeltoTouch::Bench {
namespace {

std::string textOf(const std::exception_ptr& failure) {
    try {
        if (failure)
            std::rethrow_exception(failure);
        return "";
    } catch (const std::exception& error) {
        return placedMessageOf(error);
    }
}

} // namespace

LiveSurface::LiveSurface(EventLoop& loop, const Surface::ConnectedDevice& device, std::optional<Bus::Which> bus,
                         std::vector<Setting> ofCommandLine, Handlers handlers)
    : _loop(loop), _handlers(std::move(handlers)),
      _settings(loop, bus, device.name(), std::move(ofCommandLine),
                [this](std::span<const Setting> changed) { changeSettings(changed); }) {
    _reader.emplace(device, Surface::DeviceReader::Handlers{
                                .report =
                                    [this](HostTime time, std::span<const std::uint8_t> report) {
                                        add({.time = time, .content = Report{{report.begin(), report.end()}}});
                                    },
                                .acceleration =
                                    [this](HostTime time, float x, float y, float z) {
                                        add({.time = time, .content = Acceleration{.x = x, .y = y, .z = z}});
                                    },
                                .ended =
                                    [this](const std::exception_ptr& failure) {
                                        add({.time = hostTimeNow(), .content = End{textOf(failure)}});
                                    },
                            });
}

LiveSurface::~LiveSurface() {
    {
        const MutexLock guard(_lock);
        _isEnding = true;
    }
    _room.release(); // to the reader, if it waits for room: from now on it takes none
}

// On the reader's thread.
void LiveSurface::add(Item item) {
    _room.acquire();
    const MutexLock guard(_lock);
    if (_isEnding) {
        _room.release(); // for the next one
        return;
    }
    _waiting.push_back(std::move(item));
    if (_waiting.size() == 1)
        _loop.post([this] { handOver(); });
}

void LiveSurface::handOver() {
    std::vector<Item> items;
    {
        const MutexLock guard(_lock);
        items.swap(_waiting);
    }
    if (items.empty())
        return;
    _room.release(static_cast<std::ptrdiff_t>(items.size()));
    if (!std::exchange(_hasBegun, true))
        begin(items.front().time);
    for (const Item& item : items)
        handOver(item);
    _handlers.batchEnd();
}

void LiveSurface::begin(HostTime time) const {
    for (const Setting& setting : _settings.settings())
        _handlers.setting(time, setting);
}

void LiveSurface::handOver(const Item& item) const {
    std::visit(Overloaded{
                   [&](const Report& report) { _handlers.report(item.time, report.bytes); },
                   [&](const Acceleration& sample) { _handlers.acceleration(item.time, sample.x, sample.y, sample.z); },
                   [&](const End& end) { _handlers.gone(end.failure); },
               },
               item.content);
}

// What was read before the write comes before it.
void LiveSurface::changeSettings(std::span<const Setting> changed) {
    handOver();
    if (_hasBegun) { // else they will be among those in force
        for (const Setting& setting : changed)
            _handlers.setting(hostTimeNow(), setting);
    }
    _handlers.batchEnd();
}

} // namespace VeltoTouch::Bench
