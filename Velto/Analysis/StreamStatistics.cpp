#include "Velto/Analysis/StreamStatistics.h"

#include "Velto/Analysis/NearestRank.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Analysis {
namespace {

void addTimes(StreamStatistics& statistics, const std::list<Frame>& frames) {
    std::vector<std::uint64_t> intervals;
    const Frame* last = nullptr;
    std::uint64_t duration = 0;
    for (const Frame& frame : frames) {
        if (frame.type != Frame::Type::InputReport)
            continue;
        ++statistics.reports;
        if (last != nullptr) {
            intervals.push_back(frame.timestampNs - last->timestampNs);
            duration += intervals.back();
        }
        last = &frame;
    }
    if (intervals.empty())
        return;
    if (duration > 0)
        statistics.rateHz = static_cast<double>(intervals.size()) * 1e9 / static_cast<double>(duration);
    std::ranges::sort(intervals);
    statistics.intervals = {
        .median = nearestRank(intervals, 50), .p99 = nearestRank(intervals, 99), .longest = intervals.back()};
}

} // namespace

StreamStatistics statisticsOf(PipelineRecording& recording, const std::function<void()>& frameDone) {
    StreamStatistics statistics;
    addTimes(statistics, recording.frames());
    Replay replay;
    replay.gestureHandler = [](const Gesture&) {};
    bool isReset = false; // what the recognizer sees next is no image
    replay.disturbanceHandler = [&](const Disturbance& disturbance) {
        statistics.disturbances.push_back(disturbance);
        isReset = disturbance.kind == Disturbance::Kind::Reset;
    };
    replay.frameHandler = [&](const Algs& algs, const InputReport::Image& image) {
        if (std::exchange(isReset, false))
            return;
        for (std::size_t i = 0; i < kPadCount; ++i)
            statistics.pads[i].add(image.padSignal[i], !algs.handStats.touching);
    };
    replay.frameDone = frameDone;
    replay.play(recording, {}, Replay::kMaxSpeed);
    return statistics;
}

} // namespace VeltoTouch::Analysis
