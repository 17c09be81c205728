#include "Benchmarks/SimulatedInput.h"
#include "Plugin/Algs/Algs.h"

#include <benchmark/benchmark.h>

namespace VeltoTouch::Benchmarks {
namespace {

constexpr std::size_t kImages = 20'000;

std::vector<InputReport::Image> simulatedImages() {
    std::vector<InputReport::Image> images;
    for (const PipelineRecording recording = simulatedRecording(kImages); const Frame& frame : recording.frames()) {
        if (const auto image = InputReport::Image::parse(frame.report.data(), frame.report.size()))
            images.push_back(*image);
    }
    return images;
}

// Time per image over all images of a mixed recording.
void RecognizeImage(benchmark::State& state) {
    const auto images = simulatedImages();
    Algs algs;
    for (auto image = images.begin(); [[maybe_unused]] auto _ : state) {
        auto events = algs.handleImage(*image);
        benchmark::DoNotOptimize(events);
        if (++image == images.end())
            image = images.begin();
    }
}
BENCHMARK(RecognizeImage);

} // namespace
} // namespace VeltoTouch::Benchmarks
