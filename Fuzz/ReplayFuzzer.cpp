#include "Fuzz/Require.h"
#include "Fuzz/Steps.h"
#include "Pipeline/Pipeline.h"
#include "Platform/JSON.h"

#include <cmath>
#include <limits>
#include <set>
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
        recording.pipeline = _pipeline;
        _pipeline->imageHandler = [this](std::uint64_t, const InputReport::Image&) { _digitizerEvents = 0; };
        _pipeline->firmwareEventHandler = [this](std::uint64_t, const InputReport::FirmwareEvent&) {
            _digitizerEvents = 0;
        };
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
        return _events + JSON::text(_pipeline->getState("DebugInfo").get()) +
               JSON::text(_pipeline->getState("Algs.EventStats").get()) +
               std::to_string(_pipeline->algs.handStats.touchScore);
    }

private:
    void add(std::uint64_t timestamp, const HIDEvent& event) {
        require(IOHIDEventGetTimeStamp(&event) == timestamp);
        const double region = IOHIDEventGetFloatValue(&event, kIOHIDEventFieldDigitizerY);
        if (IOHIDEventGetType(&event) == kIOHIDEventTypeDigitizer)
            require(++_digitizerEvents == 1);
        require(region == 0 || region == 1 || region == 2 || region == 3);
        _events += std::to_string(timestamp - startTime);
        for (const std::int64_t number :
             {std::int64_t{IOHIDEventGetType(&event)}, std::int64_t{IOHIDEventGetPhase(&event)},
              IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerEventMask),
              IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerGenerationCount),
              static_cast<std::int64_t>(region)})
            _events.append(" ").append(std::to_string(number));
        _events += "\n";
    }

    std::shared_ptr<Pipeline> _pipeline = std::make_shared<Pipeline>();
    int _digitizerEvents = 0; // of the report in progress
    std::string _events;
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
    std::uint64_t others = 0;
    std::set<std::string_view> keys; // since the last frame that is no setting
    for (const Frame& frame : recording.frames()) {
        if (frame.type == Frame::Type::State) {
            require(keys.insert(frame.key).second);
        } else {
            ++others;
            keys.clear();
        }
    }
    require(others <= bound);
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
    if (steps.isWritable())
        require(replayed(read) == outcome);
    return 0;
}
