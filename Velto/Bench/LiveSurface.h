#pragma once

#include "Platform/Mutex.h"
#include "Velto/Bench/SettingsSource.h"
#include "Velto/Host/HostTime.h"
#include "Velto/Surface/DeviceReader.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <semaphore>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace VeltoTouch::Bench {

// A device that is only read, beside whoever serves it: its reports and accelerometer samples, and the settings in
// force for it, one after the other on the loop's thread.
//
// Reports are read on a thread of their own, which stamps them as a recording has them: with the host's clock when they
// are read. What waits for the loop is bounded: beyond that the thread stops reading until the loop has caught up, so
// that nothing of a played or piped device is lost; of a real one the kernel drops reports, which shows as a gap.
//
// Constructed, used and destroyed on the loop's thread.
class LiveSurface {
public:
    static constexpr std::ptrdiff_t kMostWaiting = 16'384; // reports and samples

    // Called while the loop runs, in the order of time unless the clock of a piped device goes back. What one throws
    // ends the run. `time` is of the host's monotonic clock.
    struct Handlers {
        // The report ID first; may be empty. Valid during the call.
        std::function<void(HostTime time, std::span<const std::uint8_t> report)> report = [](auto...) {};
        std::function<void(HostTime time, float x, float y, float z)> acceleration = [](auto...) {}; // in g
        // Each setting in force, just before the first report or sample and at its time; then each later write.
        std::function<void(HostTime time, const Setting& setting)> setting = [](auto...) {};
        // After a batch of the above, when nothing more waits.
        std::function<void()> batchEnd = [] {};
        // The last call, when the device has gone. `failure` says why; empty if it was unplugged or at its end.
        std::function<void(const std::string& failure)> gone = [](auto&&) {};
    };

    // Opens the device. `bus` is where its service is looked for; none: nowhere. `loop` must not run after this is
    // destroyed; `device` outlives this. Throws std::runtime_error if the device cannot be opened or the service does
    // not answer.
    LiveSurface(EventLoop& loop, const Surface::ConnectedDevice& device, std::optional<Bus::Which> bus,
                std::vector<Setting> ofCommandLine, Handlers handlers);
    LiveSurface(const LiveSurface&) = delete;
    LiveSurface& operator=(const LiveSurface&) = delete;
    ~LiveSurface();

    [[nodiscard]] const SettingsSource& settings() const noexcept { return _settings; }

private:
    struct Report {
        std::vector<std::uint8_t> bytes;
    };
    struct Acceleration {
        float x, y, z;
    };
    struct End {
        std::string failure;
    };
    struct Item {
        HostTime time;
        std::variant<Report, Acceleration, End> content;
    };

    void add(Item item);
    void handOver();
    void begin(HostTime time) const;
    void handOver(const Item& item) const;
    void changeSettings(std::span<const Setting> changed);

    EventLoop& _loop;
    const Handlers _handlers;
    SettingsSource _settings;
    bool _hasBegun = false; // the settings in force are handed over
    std::counting_semaphore<> _room{kMostWaiting};
    Mutex _lock;
    std::vector<Item> _waiting VELTO_GUARDED_BY(_lock);
    bool _isEnding VELTO_GUARDED_BY(_lock) = false;
    std::optional<Surface::DeviceReader> _reader; // last: its thread uses the others
};

} // namespace VeltoTouch::Bench
