#include "Benchmarks/SimulatedInput.h"

#include <benchmark/benchmark.h>
#include <simdjson.h>

// Sizes are those of the service's recording at its fullest and of half an hour of reports at 100 Hz. The large one
// shows what the kernel takes for fresh memory, too.

namespace VeltoTouch::Benchmarks {
namespace {

constexpr std::uint64_t kBound = 4350; // the service's
constexpr int kFullest = 2 * kBound - 1;
constexpr int kHalfAnHour = 180'000;

void setBytes(benchmark::State& state, const Data& container) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(container.bytes().size()));
}

// The yardstick of the reader: the same text through a fresh parser, nothing made of it.
void ParseBare(benchmark::State& state) {
    const Ref<Data> container = simulatedRecording(static_cast<std::size_t>(state.range(0))).json();
    for ([[maybe_unused]] auto _ : state) {
        simdjson::dom::parser parser;
        benchmark::DoNotOptimize(parser.parse(container->bytes().data(), container->bytes().size(), false).error());
    }
    setBytes(state, *container);
}
BENCHMARK(ParseBare)->Arg(kFullest)->Arg(kHalfAnHour)->Unit(benchmark::kMillisecond);

void ReadContainer(benchmark::State& state) {
    const Ref<Data> container = simulatedRecording(static_cast<std::size_t>(state.range(0))).json();
    for ([[maybe_unused]] auto _ : state) {
        PipelineRecording recording(container.get());
        benchmark::DoNotOptimize(recording);
    }
    setBytes(state, *container);
}
BENCHMARK(ReadContainer)->Arg(kFullest)->Arg(kHalfAnHour)->Unit(benchmark::kMillisecond);

void WriteContainer(benchmark::State& state) {
    PipelineRecording recording = simulatedRecording(static_cast<std::size_t>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        const Ref<Data> container = recording.json();
        benchmark::DoNotOptimize(container->bytes().data());
    }
    setBytes(state, *recording.json());
}
BENCHMARK(WriteContainer)->Arg(kFullest)->Arg(kHalfAnHour)->Unit(benchmark::kMillisecond);

// One report into a recording at its bound, its share of the trimming included.
void AppendReport(benchmark::State& state) {
    const PipelineRecording source = simulatedRecording(1000);
    PipelineRecording recording;
    recording.setMaxFrameCount(kBound);
    std::uint64_t time = 0;
    for (auto frame = source.frames().begin(); [[maybe_unused]] auto _ : state) {
        recording.handleInputReport(++time, frame->report.data(), frame->report.size());
        if (++frame == source.frames().end())
            frame = source.frames().begin();
    }
}
BENCHMARK(AppendReport);

} // namespace
} // namespace VeltoTouch::Benchmarks
