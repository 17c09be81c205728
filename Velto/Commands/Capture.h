#pragma once

#include "Velto/Bench/LiveFrames.h"
#include "Velto/Bench/TroubleWatch.h"
#include "Velto/Commands/CaptureFiles.h"
#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Options/Devices.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VeltoTouch::Velto {

struct CaptureOptions {
    DeviceChoice device;
    std::string output;
    float speed = 1;
    std::optional<std::chrono::microseconds> duration; // none: without end
    std::vector<Bench::Trouble> on;                    // empty: everything is kept
    HostTime before = std::chrono::seconds(10);
    HostTime after = std::chrono::seconds(5);
    std::optional<std::uint64_t> limit;
    Bus::Which bus = Bus::Which::System;
};

// One capture by `velto capture`, from the first frame to the figures at the end. On the loop's thread.
class Capture {
public:
    // `options` outlive this.
    explicit Capture(const CaptureOptions& options);

    // Begins the files, before anything comes. Throws std::runtime_error if they cannot be begun.
    void begin();

    // Returns the handlers of what comes from the surface. If one throws, what is written is whole.
    [[nodiscard]] Bench::LiveSurface::Handlers handlers();

    void sync() { _target->sync(); }
    void finish() { _target->finish(); }

    // Return duration, rate, size and gaps: in a line that the next one overwrites, and in several for the end.
    [[nodiscard]] std::string line() const;
    [[nodiscard]] std::string lines() const;

private:
    void add(const Frame& frame);
    [[nodiscard]] Seconds duration() const noexcept { return _last - _first; }
    [[nodiscard]] double rateHz() const noexcept;

    const CaptureOptions& _options;
    std::vector<Bench::Trouble> _troubles; // of the frame in progress
    Bench::TroubleWatch _watch;
    std::unique_ptr<CaptureTarget> _target;
    std::uint64_t _reports = 0;
    HostTime _first{};
    HostTime _last{};
};

} // namespace VeltoTouch::Velto
