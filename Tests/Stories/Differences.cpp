#include "Tests/Stories/Differences.h"

#include "Tests/Stories/Values.h"

#include <bit>
#include <cmath>
#include <type_traits>

namespace VeltoTouch::Tests {
namespace {

// Equal to the bit, but for the sign of NaN.
template <class A, class B>
bool same(const A& a, const B& b) {
    if constexpr (std::is_same_v<A, float> && std::is_same_v<B, float>)
        return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
    else if constexpr (std::is_enum_v<A> && std::is_enum_v<B>)
        return static_cast<std::int32_t>(a) == static_cast<std::int32_t>(b);
    else
        return a == b;
}

// Fields have the same names on both sides.
#define VELTO_SAME(field)                                                                                              \
    if (!same(ours.field, theirs.field))                                                                               \
    return #field

const char* differenceOfEvent(const Reference::Event& ours, const Reference::Event& theirs) {
    VELTO_SAME(kind);
    VELTO_SAME(timestamp);
    VELTO_SAME(options);
    VELTO_SAME(phase);
    VELTO_SAME(transducerType);
    VELTO_SAME(index);
    VELTO_SAME(identity);
    VELTO_SAME(eventMask);
    VELTO_SAME(buttonMask);
    VELTO_SAME(generationCount);
    VELTO_SAME(x);
    VELTO_SAME(y);
    VELTO_SAME(z);
    VELTO_SAME(tipPressure);
    VELTO_SAME(barrelPressure);
    VELTO_SAME(range);
    VELTO_SAME(touch);
    VELTO_SAME(usagePage);
    VELTO_SAME(usage);
    VELTO_SAME(version);
    return nullptr;
}

const char* differenceOfImage(const Reference::Image& ours, const Reference::Image& theirs) {
    VELTO_SAME(frameNumber);
    VELTO_SAME(timestampMs);
    VELTO_SAME(reserved0);
    VELTO_SAME(reserved1);
    VELTO_SAME(reserved2);
    VELTO_SAME(reserved3);
    VELTO_SAME(padRaw);
    VELTO_SAME(padSignal);
    return nullptr;
}

} // namespace

const char* differenceOfPixel(const Pixel& ours, const Reference::Pixel& theirs) {
    VELTO_SAME(value);
    VELTO_SAME(gain);
    VELTO_SAME(normalized);
    VELTO_SAME(onPeak);
    VELTO_SAME(offTrough);
    VELTO_SAME(on);
    VELTO_SAME(aboveNoise);
    VELTO_SAME(everAboveNoise);
    VELTO_SAME(everOn);
    VELTO_SAME(peakAboveNoise);
    VELTO_SAME(index);
    return nullptr;
}

const char* differenceOfHand(const HandStats& ours, const Reference::HandStats& theirs) {
    VELTO_SAME(svm.score);
    VELTO_SAME(touchScore);
    VELTO_SAME(activationThreshold);
    VELTO_SAME(holdTimeoutMs);
    VELTO_SAME(peakSignal);
    VELTO_SAME(enableHoldSuppression);
    VELTO_SAME(enableTapSuppression);
    VELTO_SAME(touching);
    VELTO_SAME(wasTouching);
    VELTO_SAME(aboveNoise);
    VELTO_SAME(wasAboveNoise);
    VELTO_SAME(holding);
    VELTO_SAME(wasHolding);
    VELTO_SAME(suppressingHold);
    VELTO_SAME(wasSuppressingHold);
    VELTO_SAME(tapCandidate);
    VELTO_SAME(tapDetected);
    VELTO_SAME(tapRejected);
    VELTO_SAME(holdTimedOut);
    VELTO_SAME(wasHoldTimedOut);
    VELTO_SAME(touchStartTime);
    VELTO_SAME(touchEndTime);
    VELTO_SAME(aboveNoiseTime);
    VELTO_SAME(belowNoiseTime);
    VELTO_SAME(lastEventTime);
    VELTO_SAME(signalPerDuration);
    VELTO_SAME(signalPerTouchDuration);
    VELTO_SAME(timeDurationRatio);
    VELTO_SAME(nonActivePixels);
    VELTO_SAME(tapSVMScore);
    VELTO_SAME(activeRegion);
    VELTO_SAME(previousRegion);
    VELTO_SAME(eventRegion);
    VELTO_SAME(peakValue);
    VELTO_SAME(peakPixel);
    // What otherwise shows in close calls alone.
    VELTO_SAME(updateTimeBiasFactor(ours.touchStartTime));
    VELTO_SAME(fuzzifyAndClip(ours.timeDurationRatio, 0.2F, 0.5F, 1.3F, 5.0F));
    for (std::size_t region = 0; region < kRegionCount; ++region)
        VELTO_SAME(regionMax[region]);
    return nullptr;
}

const char* differenceOfGroup(const VirtualImage& ours, const Reference::VirtualImage& theirs, std::size_t group) {
    VELTO_SAME(values[group]);
    VELTO_SAME(maxPixelIndex[group]);
    VELTO_SAME(normalizationFactors[group]);
    return nullptr;
}

const char* differenceOfCall(const Reference::Call& ours, const Ref<Value>& value, const Reference::Call& theirs) {
    VELTO_SAME(name);
    VELTO_SAME(timestamp);
    VELTO_SAME(key);
    VELTO_SAME(report);
    VELTO_SAME(firmwareEvent.event);
    VELTO_SAME(firmwareEvent.context);
    VELTO_SAME(previousFrame);
    VELTO_SAME(state);
    VELTO_SAME(events.size());
    if (!areSame(value.get(), theirs.value))
        return "value";
    for (std::size_t i = 0; i < ours.events.size(); ++i) {
        if (const char* field = differenceOfEvent(ours.events[i], theirs.events[i]))
            return field;
    }
    return differenceOfImage(ours.image, theirs.image);
}

#undef VELTO_SAME

std::string differenceOfFrames(const std::list<Frame>& ours, const std::list<Reference::Frame>& theirs) {
    if (ours.size() != theirs.size())
        return "number of frames recorded";
    auto other = theirs.begin();
    for (const Frame& frame : ours) {
        if (static_cast<int>(frame.type) != static_cast<int>(other->type) || frame.timestampNs != other->timestampNs ||
            frame.key != other->key || frame.report != other->report || !areSame(frame.value.get(), other->value))
            return "frame " + std::to_string(std::distance(theirs.begin(), other)) + " of the recording";
        ++other;
    }
    return {};
}

} // namespace VeltoTouch::Tests
