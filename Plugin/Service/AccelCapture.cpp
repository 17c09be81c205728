#include "Platform/Clock.h"
#include "Plugin/Service/VeltoTouchHIDService.h"

// The accelerometer's history around digitizer events: the newest samples wait in a short list; after a digitizer
// event they are recorded, and so are the next ones.

namespace VeltoTouch {
namespace {

constexpr std::size_t kSamplesBeforeDigitizerEvent = 100;

float axisOf(const HIDEvent& event, IOHIDEventField field) noexcept {
    return static_cast<float>(IOHIDEventGetFloatValue(&event, field));
}

Ref<Value> valueOf(const AccelSample& sample) {
    std::vector<Dictionary::Entry> axes;
    axes.push_back({.key = "X", .value = Number::withFloat(sample.x)});
    axes.push_back({.key = "Y", .value = Number::withFloat(sample.y)});
    axes.push_back({.key = "Z", .value = Number::withFloat(sample.z)});
    return makeRef<Dictionary>(std::move(axes));
}

} // namespace

void VeltoTouchHIDService::handleAccelEvent(const HIDEvent& event) {
    const AccelSample sample{.timestamp = mach_absolute_time(),
                             .x = axisOf(event, kIOHIDEventFieldAccelerometerX),
                             .y = axisOf(event, kIOHIDEventFieldAccelerometerY),
                             .z = axisOf(event, kIOHIDEventFieldAccelerometerZ)};
    const MutexLock guard(_pipelineLock);
    if (_accel.samplesNeededCount == 0) {
        _accel.samples.push_back(sample);
        while (_accel.samples.size() > kSamplesBeforeDigitizerEvent)
            _accel.samples.pop_front();
        return;
    }
    while (!_accel.samples.empty()) {
        recordSample(_accel.samples.front());
        _accel.samples.pop_front();
    }
    recordSample(sample);
    --_accel.samplesNeededCount;
}

void VeltoTouchHIDService::recordSample(const AccelSample& sample) {
    _recording.handleMetadata(sample.timestamp, "Accel", valueOf(sample));
}

} // namespace VeltoTouch
