#include "Benchmarks/ProgramTime.h"
#include "Benchmarks/SimulatedInput.h"

#include <ctime>
#include <filesystem>
#include <fstream>

#include <benchmark/benchmark.h>
#include <simdjson.h>
#include <unistd.h>

namespace VeltoTouch::Benchmarks {
namespace {

constexpr std::size_t kFrames = 200'000;

double cpuTimeNow() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// CPU time of a bare parse of the file's text, which is in memory already.
double cpuTimeOfParse(const simdjson::padded_string& text) {
    const double start = cpuTimeNow();
    simdjson::dom::parser parser;
    benchmark::DoNotOptimize(parser.parse(text).error());
    return cpuTimeNow() - start;
}

// The whole command over 200,000 frames against the bare parse, in one run. `ratio` is the figure.
void ReplayAgainstBareParse(benchmark::State& state) {
    const std::string file =
        std::filesystem::temp_directory_path() / ("velto-benchmark-" + std::to_string(::getpid()) + ".json");
    std::ofstream(file) << simulatedRecording(kFrames).json()->bytes();
    const simdjson::padded_string text = simdjson::padded_string::load(file);
    double replayTime = 0;
    double parseTime = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double time = timeOfVelto({"replay", "--jsonl", file}).cpu;
        if (time < 0) {
            state.SkipWithError("velto replay failed");
            break;
        }
        replayTime += time;
        parseTime += cpuTimeOfParse(text);
        state.SetIterationTime(time);
    }
    std::filesystem::remove(file);
    const auto iterations = static_cast<double>(state.iterations());
    state.counters["replay_ms"] = 1e3 * replayTime / iterations;
    state.counters["parse_ms"] = 1e3 * parseTime / iterations;
    state.counters["ratio"] = replayTime / parseTime;
}
BENCHMARK(ReplayAgainstBareParse)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace
} // namespace VeltoTouch::Benchmarks
