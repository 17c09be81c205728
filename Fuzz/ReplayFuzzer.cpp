#include "Fuzz/Require.h"
#include "Fuzz/Steps.h"
#include "Pipeline/Pipeline.h"
#include "Platform/JSON.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <string>

// A made-up life of a surface, through a bounded recording with a real pipeline behind it; then the recording is
// replayed. Promises: the recognizer stays within its limits, the list within its bound, and a replay of the written
// recording finds what a replay of the frames themselves finds.

using namespace VeltoTouch;

namespace {

// A pipeline that watches its own events and keeps their text.
class WatchedPipeline {
public:
    explicit WatchedPipeline(PipelineRecording& recording) {
        _out.precision(std::numeric_limits<float>::max_digits10);
        recording.pipeline = _pipeline;
        _pipeline->imageHandler = [this](auto, const auto&) { _digitizerEvents = 0; };
        _pipeline->firmwareEventHandler = [this](auto, const auto&) { _digitizerEvents = 0; };
        _pipeline->hidEventsHandler = [this](std::uint64_t timestamp, const HIDEvents& events) {
            require(!events.empty());
            for (const Ref<HIDEvent>& event : events)
                add(timestamp, *event);
        };
    }

    // Times count from there.
    std::uint64_t startTime = 0;

    void requireLimits() const {
        const HandStats& hand = _pipeline->algs.handStats;
        require(std::fabs(hand.touchScore) <= hand.touchScoreLimit); // no NaN either
        require(hand.activeRegion <= PixelRegion::VolumeUp && hand.eventRegion <= PixelRegion::VolumeUp);
        require(hand.peakPixel >= 0 && hand.peakPixel < static_cast<int>(kPadCount));
    }

    // All that came of it.
    [[nodiscard]] std::string outcome() {
        _out << JSON::text(_pipeline->getState("DebugInfo").get())
             << JSON::text(_pipeline->getState("Algs.EventStats").get()) << _pipeline->algs.handStats.touchScore;
        return _out.str();
    }

private:
    void add(std::uint64_t timestamp, const HIDEvent& event) {
        require(IOHIDEventGetTimeStamp(&event) == timestamp);
        if (IOHIDEventGetType(&event) == kIOHIDEventTypeDigitizer)
            require(++_digitizerEvents == 1);
        const double region = IOHIDEventGetFloatValue(&event, kIOHIDEventFieldDigitizerY);
        require(region == 0 || region == 1 || region == 2 || region == 3);
        _out << timestamp - startTime << ' ' << IOHIDEventGetType(&event) << ' ' << IOHIDEventGetPhase(&event) << ' '
             << IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerEventMask) << ' '
             << IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerGenerationCount) << ' ' << region << '\n';
    }

    std::shared_ptr<Pipeline> _pipeline = std::make_shared<Pipeline>();
    int _digitizerEvents = 0; // of the report in progress
    std::ostringstream _out;
};

std::string replayed(PipelineRecording recording) {
    WatchedPipeline pipeline(recording);
    recording.playReset();
    pipeline.startTime = recording.playStartTime();
    while (recording.playCanContinue()) {
        recording.playNextFrame(std::numeric_limits<float>::infinity());
        pipeline.requireLimits();
    }
    return pipeline.outcome();
}

// Twice the bound is never reached but by settings that trimming keeps.
void requireBound(const PipelineRecording& recording, std::uint64_t bound) {
    if (bound == 0 || recording.frames().size() < 2 * bound)
        return;
    std::list<Frame> frames = recording.frames();
    const auto isSetting = [](const Frame& frame) { return frame.type == Frame::Type::State; };
    require(frames.size() - static_cast<std::size_t>(std::ranges::count_if(frames, isSetting)) <= bound);
    const std::size_t count = frames.size();
    PipelineRecording::trimFrames(frames, bound);
    require(frames.size() == count);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    PipelineRecording recording;
    WatchedPipeline live(recording);
    Fuzz::Steps steps({bytes, size}, recording);
    const std::uint64_t bound = steps.takeBound();
    recording.setMaxFrameCount(bound);
    while (!steps.isAtEnd()) {
        steps.step();
        live.requireLimits();
        requireBound(recording, bound);
    }

    recording.pipeline.reset();
    PipelineRecording sorted = recording;
    if (bound != 0)
        sorted.trimFrames(bound);
    sorted.sortFrames();
    const std::string outcome = replayed(sorted);
    const Ref<Data> container = recording.json();
    const PipelineRecording read(container.get());
    require(read.frames().size() == sorted.frames().size());
    if (container->bytes().find("Unrepresentable") == std::string_view::npos)
        require(replayed(read) == outcome);
    return 0;
}
