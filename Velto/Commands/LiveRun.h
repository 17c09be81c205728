#pragma once

#include "Velto/Bench/LiveSurface.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/StopSignals.h"
#include "Velto/Options/Devices.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace VeltoTouch::Velto {

// The exit status of a command whose device has gone: 0 if it was unplugged or at its end. Reports any other failure
// under the device's name.
[[nodiscard]] int statusOfEnd(const std::string& device, const std::string& failure);

// A command's run on a device: until the device goes, a signal comes or the time is over.
//
// Until its signals are taken, a signal ends the program: whatever waits for the device or the bus before the run can
// be interrupted. The main thread.
class LiveRun {
public:
    // Connects the device. Throws what `connect` throws, under the device's name.
    explicit LiveRun(const DeviceChoice& choice, double speed = 1);
    LiveRun(const LiveRun&) = delete;
    LiveRun& operator=(const LiveRun&) = delete;
    ~LiveRun() = default;

    [[nodiscard]] EventLoop& loop() noexcept { return _loop; }
    [[nodiscard]] const Surface::ConnectedDevice& device() const noexcept { return _device; }
    // Returns the device's name in messages.
    [[nodiscard]] const std::string& subject() const noexcept { return _subject; }

    // Reads the device beside whoever serves it; what comes is handed over by `run`. The device's end ends the run, or
    // leaves that to the handler. Throws what LiveSurface throws, under the device's name. Called at most once.
    enum class WhenGone : bool { End, Stay };
    void read(std::optional<Bus::Which> bus, std::vector<Bench::Setting> ofCommandLine,
              Bench::LiveSurface::Handlers handlers, WhenGone whenGone = WhenGone::End);
    // Returns what is in force for the device that is read.
    [[nodiscard]] const Bench::SettingsSource& settings() const noexcept { return _surface->settings(); }

    // From here on signals wait for the run. Called before something is begun that a signal must not leave half done:
    // a terminal that is taken over, a file, a first line. `run` calls it otherwise.
    void takeSignals();

    // As StopSignals::run.
    void run(
        std::optional<std::chrono::microseconds> longest = {}, const std::function<void()>& close = [] {});

    // Returns the exit status after the run; reports why a device that was read has failed.
    [[nodiscard]] int status() const { return statusOfEnd(_subject, _failure); }

private:
    const std::string _subject;
    EventLoop _loop;
    const Surface::ConnectedDevice _device;
    std::optional<StopSignals> _signals;
    std::string _failure;
    std::optional<Bench::LiveSurface> _surface; // last: it is closed first
};

} // namespace VeltoTouch::Velto
