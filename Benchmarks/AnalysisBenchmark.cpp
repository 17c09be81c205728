#include "Benchmarks/ProgramTime.h"
#include "Benchmarks/SimulatedInput.h"
#include "Velto/Analysis/TouchObserver.h"

#include <chrono>
#include <filesystem>
#include <fstream>

#include <benchmark/benchmark.h>
#include <unistd.h>

namespace VeltoTouch::Benchmarks {
namespace {

using Analysis::Track;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMinute = 6'000; // images
constexpr int kRecordings = 40;

// Recordings of a minute each, for as long as it lives.
class Corpus {
public:
    explicit Corpus(int recordings)
        : folder(std::filesystem::temp_directory_path() / ("velto-benchmark-" + std::to_string(::getpid()))) {
        std::filesystem::create_directory(folder);
        const Ref<Data> container = simulatedRecording(kMinute).json();
        for (int i = 0; i < recordings; ++i)
            std::ofstream(folder / (std::to_string(i) + ".json")) << container->bytes();
    }
    Corpus(const Corpus&) = delete;
    ~Corpus() { std::filesystem::remove_all(folder); }

    const std::filesystem::path folder;
};

// A play from memory with records of all touches, against the recognizer's own time for the same images. `ratio` is the
// figure.
void TouchesAgainstRecognizer(benchmark::State& state) {
    const PipelineRecording recording = simulatedRecording(kMinute);
    const Track track(recording.frames());
    double alone = 0;
    double observed = 0;
    for ([[maybe_unused]] auto _ : state) {
        const auto start = Clock::now();
        track.play({}, [](const Track::Step&, const Algs&, std::span<const Gesture>) {});
        const auto middle = Clock::now();
        benchmark::DoNotOptimize(touchesOf(track, {}));
        const auto end = Clock::now();
        alone += std::chrono::duration<double>(middle - start).count();
        observed += std::chrono::duration<double>(end - middle).count();
        state.SetIterationTime(std::chrono::duration<double>(end - middle).count());
    }
    state.counters["ratio"] = observed / alone;
}
BENCHMARK(TouchesAgainstRecognizer)->UseManualTime()->Unit(benchmark::kMillisecond);

// A command against `velto replay --jsonl` of the same recordings, CPU time of one job. `ratio` is the figure.
void commandAgainstReplay(benchmark::State& state, int recordings, std::vector<std::string> arguments) {
    const Corpus corpus(recordings);
    arguments.push_back(corpus.folder);
    double command = 0;
    double replay = 0;
    for ([[maybe_unused]] auto _ : state) {
        const ProgramTime time = timeOfVelto(arguments);
        if (time.cpu < 0) {
            state.SkipWithError("velto failed");
            break;
        }
        command += time.cpu;
        replay += timeOfVelto({"replay", "--jsonl", corpus.folder}).cpu;
        state.SetIterationTime(time.cpu);
    }
    state.counters["ratio"] = command / replay;
}
#define VELTO_AGAINST_REPLAY(name, recordings, ...)                                                                    \
    BENCHMARK_CAPTURE(commandAgainstReplay, name, recordings, std::vector<std::string>{__VA_ARGS__})                   \
        ->UseManualTime()                                                                                              \
        ->Unit(benchmark::kMillisecond)                                                                                \
        ->Iterations(5)
VELTO_AGAINST_REPLAY(explain, kRecordings, "explain", "--jsonl", "--jobs", "1");
VELTO_AGAINST_REPLAY(wouldBeOfOneTouch, 1, "explain", "--jsonl", "--jobs", "1", "--touch", "2");
VELTO_AGAINST_REPLAY(wouldBeOfAllTouches, 1, "explain", "--jsonl", "--jobs", "1", "--would-be");
VELTO_AGAINST_REPLAY(score, kRecordings, "score", "--jsonl", "--jobs", "1");

// Two jobs against one, by the clock. `ratio` is how many times faster two are.
void TwoJobsAgainstOne(benchmark::State& state) {
    const Corpus corpus(5 * kRecordings); // so many that starting the program does not count
    double one = 0;
    double two = 0;
    for ([[maybe_unused]] auto _ : state) {
        one += timeOfVelto({"score", "--jsonl", "--jobs", "1", corpus.folder}).wall;
        const double time = timeOfVelto({"score", "--jsonl", "--jobs", "2", corpus.folder}).wall;
        two += time;
        state.SetIterationTime(time);
    }
    state.counters["ratio"] = one / two;
}
BENCHMARK(TwoJobsAgainstOne)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace
} // namespace VeltoTouch::Benchmarks
