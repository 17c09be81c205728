#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Clock.h"
#include "Platform/Dispatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

// Devices that play reports in turn, at a pace or as fast as they are handled.

namespace VeltoTouch::Benchmarks {

using Reports = std::vector<std::vector<std::uint8_t>>;
using Times = std::vector<std::uint64_t>; // host ticks, which are nanoseconds

// What a controller does: wakes whoever waits for the other end of a pipe, again and again.
class Ticks {
public:
    static constexpr std::uint64_t kPeriodUs = 200;

    explicit Ticks(std::size_t count) {
        if (::pipe2(_ends.data(), O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
        _sender = std::thread([this, count] {
            constexpr sched_param kOrdinary{.sched_priority = 0};
            pthread_setschedparam(pthread_self(), SCHED_OTHER, &kOrdinary); // whoever made it
            for (std::size_t i = 0; i < count && ::write(_ends[1], "", 1) == 1; ++i)
                usleep(kPeriodUs);
        });
    }
    Ticks(const Ticks&) = delete;
    Ticks& operator=(const Ticks&) = delete;
    ~Ticks() {
        _sender.join();
        ::close(_ends[0]);
        ::close(_ends[1]);
    }

    [[nodiscard]] int descriptor() const noexcept { return _ends[0]; }
    // Waits where none is there.
    void take() const noexcept {
        char tick = 0;
        (void)!::read(_ends[0], &tick, 1);
    }

private:
    std::array<int, 2> _ends{}; // to read from, to write to
    std::thread _sender;
};

// Plays reports in turn. Notes when each came and when it was handled.
class BenchmarkDevice : public HIDDeviceBackend {
public:
    BenchmarkDevice(Reports reports, std::size_t count) : _reports(std::move(reports)), _count(count) {}

    IOReturn open(IOOptionBits /*options*/) override { return kIOReturnSuccess; }
    void close(IOOptionBits /*options*/) override {}
    IOReturn getReport(IOHIDReportType /*type*/, std::uint32_t /*reportID*/, std::span<std::uint8_t> /*buffer*/,
                       std::size_t& length) override {
        length = 0;
        return kIOReturnUnsupported;
    }
    Ref<Value> getProperty(const std::string& /*key*/) override { return nullptr; }
    bool setProperty(const std::string& /*key*/, const Ref<Value>& /*value*/) override { return false; }

    void waitUntilSent() const { dispatch_semaphore_wait(_isOver.get()); }

protected:
    // Whether there are more.
    bool send(InputReportSink& sink, std::uint64_t now) {
        const auto& report = _reports[_sent++ % _reports.size()];
        std::copy(report.begin(), report.end(), sink.buffer().begin());
        sink.deliver(report.size(), now);
        if (_sent == _count)
            dispatch_semaphore_signal(_isOver.get());
        return _sent < _count;
    }

private:
    const Reports _reports;
    const std::size_t _count;
    std::size_t _sent = 0;
    const Ref<DispatchSemaphore> _isOver = dispatch_semaphore_create(0);
};

// A report every 200 microseconds.
class PacedDevice final : public BenchmarkDevice {
public:
    PacedDevice(Reports reports, std::size_t count) : BenchmarkDevice(std::move(reports), count), _ticks(count) {}

    RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) override {
        const auto readable = [this, &sink] {
            _ticks.take();
            const std::uint64_t now = mach_absolute_time();
            send(sink, now);
            arrivals.push_back(now);
            handled.push_back(mach_absolute_time());
        };
        return loop.addDescriptor(mode, _ticks.descriptor(), readable, [] {});
    }

    // Read when all are sent and the service is unscheduled.
    Times arrivals;
    Times handled;

private:
    const Ticks _ticks;
};

// One report after the other, as fast as they are handled.
class FastDevice final : public BenchmarkDevice {
public:
    using BenchmarkDevice::BenchmarkDevice;

    RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) override {
        return loop.addTimer(mode, mach_absolute_time(), [this, &sink]() -> std::optional<std::uint64_t> {
            const std::uint64_t now = mach_absolute_time();
            return send(sink, now) ? std::optional(now) : std::nullopt;
        });
    }
};

} // namespace VeltoTouch::Benchmarks
