#include "Benchmarks/PlayingDevices.h"
#include "Benchmarks/SimulatedInput.h"
#include "Platform/Clock.h"
#include "Plugin/Recording/RecordingCopy.h"
#include "Plugin/Reports/InputReport.h"
#include "Plugin/Service/Factory.h"
#include "Velto/Host/HostedService.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

// The live service: how long a report takes from its arrival to the host's callback, beside what a bare hand-off from
// one thread to another takes in the same run; what readers of properties do to that; and its memory.

namespace VeltoTouch::Benchmarks {
namespace {

constexpr std::size_t kHandOffs = 20'000;
constexpr std::size_t kServiceFullest = 2 * 4350 - 1; // frames of the service's recording

// Percentiles of end - start, in microseconds.
class Latencies {
public:
    Latencies(const Times& starts, const Times& ends) {
        for (std::size_t i = 0; i < std::min(starts.size(), ends.size()); ++i)
            _us.push_back(static_cast<double>(ends[i] - starts[i]) / 1e3);
        std::sort(_us.begin(), _us.end());
    }
    [[nodiscard]] double at(double share) const {
        return _us.empty() ? 0.0 : _us[static_cast<std::size_t>(share * static_cast<double>(_us.size() - 1))];
    }
    void show(benchmark::State& state, const std::string& name) const {
        state.counters[name + "p50_us"] = at(0.5);
        state.counters[name + "p99_us"] = at(0.99);
        state.counters[name + "p99.9_us"] = at(0.999);
        state.counters[name + "max_us"] = at(1);
    }

private:
    std::vector<double> _us;
};

// The yardstick: a thread of the report thread's priority, woken as that one is, wakes another by mutex and condition
// variable.
Latencies bareHandOff() {
    std::mutex mutex;
    std::condition_variable condition;
    std::size_t sent = 0; // guarded by mutex
    Times starts;
    Times ends;
    std::thread receiver([&] {
        while (ends.size() < kHandOffs) {
            std::unique_lock lock(mutex);
            condition.wait(lock, [&] { return sent > ends.size(); });
            ends.push_back(mach_absolute_time());
        }
    });
    std::thread sender([&] {
        constexpr sched_param kReportPriority{.sched_priority = 63};
        pthread_setschedparam(pthread_self(), SCHED_RR, &kReportPriority); // where the service is allowed it, too
        const Ticks ticks(kHandOffs);
        for (std::size_t i = 0; i < kHandOffs; ++i) {
            ticks.take();
            starts.push_back(mach_absolute_time());
            const std::scoped_lock lock(mutex);
            ++sent;
            condition.notify_one();
        }
    });
    sender.join();
    receiver.join();
    return {starts, ends};
}

// A firmware reset goes through all of the recognizer and always gives one event.
std::vector<std::uint8_t> resetReport() {
    std::vector<std::uint8_t> report(InputReport::kFirmwareEventReportLength);
    report[0] = InputReport::FirmwareEvent::kReportID;
    report[1] = InputReport::FirmwareEvent::kReset;
    return report;
}

Reports simulatedReports(std::size_t count) {
    Reports reports;
    for (const PipelineRecording recording = simulatedRecording(count); const Frame& frame : recording.frames()) {
        if (frame.type == Frame::Type::InputReport)
            reports.push_back(frame.report);
    }
    return reports;
}

// Shows the latencies of reports while `readers` threads read the largest properties without a pause.
void reportsToCallback(benchmark::State& state, int readers) {
    for ([[maybe_unused]] auto _ : state) {
        const Latencies yardstick = bareHandOff();
        const auto device = makeRef<PacedDevice>(Reports{resetReport()}, kServiceFullest + kHandOffs);
        const io_service_t registered = registerDevice(device);
        Times callbacks; // the queue's alone, until it is drained
        HostedService service(VeltoTouchHIDServiceFactory, registered, nullptr,
                              [&](const Gesture&) { callbacks.push_back(mach_absolute_time()); });
        std::atomic<bool> isOver{false};
        std::vector<std::thread> threads;
        for (int reader = 0; reader < readers; ++reader) {
            threads.emplace_back([&, key = reader % 2 == 0 ? "Recording" : "ServicePluginDebug"] {
                while (!isOver)
                    benchmark::DoNotOptimize(service.copyProperty(key).get());
            });
        }
        service.schedule();
        device->waitUntilSent();
        isOver = true;
        for (std::thread& thread : threads)
            thread.join();
        service.stop();
        unregisterDevice(registered);
        const auto atBound = [](Times& times) { times.erase(times.begin(), times.begin() + kServiceFullest); };
        atBound(device->arrivals);
        atBound(device->handled);
        atBound(callbacks);
        const Latencies latencies(device->arrivals, callbacks);
        yardstick.show(state, "bare_");
        latencies.show(state, "");
        Latencies(device->arrivals, device->handled).show(state, "handled_");
        state.counters["ratio_p50"] = latencies.at(0.5) / yardstick.at(0.5);
        state.counters["ratio_p99"] = latencies.at(0.99) / yardstick.at(0.99);
    }
}

void ReportToCallback(benchmark::State& state) { reportsToCallback(state, 0); }
BENCHMARK(ReportToCallback)->Iterations(1)->Unit(benchmark::kMillisecond);

void ReportToCallbackWhileTwoThreadsRead(benchmark::State& state) { reportsToCallback(state, 2); }
BENCHMARK(ReportToCallbackWhileTwoThreadsRead)->Iterations(1)->Unit(benchmark::kMillisecond);

// How long a read of the recording holds the lock: one piece of the copy, into memory that was taken before.
void CopyPieceOfRecording(benchmark::State& state) {
    constexpr std::size_t kPiece = 64; // the service's
    const PipelineRecording recording = simulatedRecording(kServiceFullest);
    double longest = 0;
    std::optional<RecordingCopy> copy;
    for (bool isComplete = true; [[maybe_unused]] auto _ : state) {
        if (isComplete)
            copy.emplace(kServiceFullest);
        const std::uint64_t start = mach_absolute_time();
        isComplete = copy->copySome(recording, kPiece);
        const double duration = static_cast<double>(mach_absolute_time() - start) / 1e9;
        state.SetIterationTime(duration);
        longest = std::max(longest, duration);
    }
    state.counters["longest_us"] = longest * 1e6;
}
BENCHMARK(CopyPieceOfRecording)->UseManualTime()->Unit(benchmark::kMicrosecond);

double residentMegabytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

// Two million simulated reports through the whole service as fast as it takes them; `growth_MB` is what the process
// grew by after the first two hundred thousand.
void TwoMillionReports(benchmark::State& state) {
    constexpr std::size_t kFirst = 200'000;
    constexpr std::size_t kRest = 1'800'000;
    for ([[maybe_unused]] auto _ : state) {
        const auto reports = simulatedReports(100'000);
        double resident = 0;
        for (const std::size_t count : {kFirst, kRest}) {
            const auto device = makeRef<FastDevice>(reports, count);
            const io_service_t registered = registerDevice(device);
            HostedService service(VeltoTouchHIDServiceFactory, registered, nullptr, [](const Gesture&) {});
            const std::uint64_t start = mach_absolute_time();
            service.schedule();
            device->waitUntilSent();
            state.counters["us_per_report"] =
                static_cast<double>(mach_absolute_time() - start) / 1e3 / static_cast<double>(count);
            service.unschedule();
            state.counters["growth_MB"] = residentMegabytes() - resident;
            resident = residentMegabytes();
            service.stop();
            unregisterDevice(registered);
        }
    }
}
BENCHMARK(TwoMillionReports)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace VeltoTouch::Benchmarks
