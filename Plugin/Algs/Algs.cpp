#include "Plugin/Algs/Algs.h"

#include "Platform/JSON.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch {
namespace {

//                                               A        B        C        D        E
constexpr std::array<float, kPadCount> padGainTable{1.9219F, 1.8833F, 1.9281F, 1.8837F, 1.9163F,
                                                    // F     G        H        I        J
                                                    1.8105F, 1.0081F, 1.0F, 1.4851F, 1.5033F,
                                                    // K     L        M        N        O
                                                    2.4154F, 1.5378F, 1.5431F, 1.04F, 1.0493F};

constexpr auto kPadIndices = [] {
    std::array<std::int32_t, kPadCount> indices{};
    std::iota(indices.begin(), indices.end(), 0);
    return indices;
}();

// A group's index is a letter until its first frame sets the dominant pad.
std::array<std::int32_t, kGroupCount> firstLetters(const VirtualImage& image) {
    std::array<std::int32_t, kGroupCount> letters{};
    std::ranges::transform(image.names, letters.begin(), [](std::string_view name) { return name.front(); });
    return letters;
}

} // namespace

Algs::Algs()
    : log(os_log_create("org.velto.touch", "Algs")), pixels(padGainTable, kPadIndices),
      virtualPixels(virtualImage.normalizationFactors, firstLetters(virtualImage), virtualImage.names) {}

HIDEvents Algs::handleImage(const InputReport::Image& image) noexcept {
    HIDEvents events;
    processTouchFrame(image.padSignal.data(), image.frameNumber, image.timestampMs, events);
    return events;
}

HIDEvents Algs::handleReset() noexcept {
    static constexpr std::array<std::int16_t, kPadCount> kNoContact{};
    HIDEvents events;
    processTouchFrame(kNoContact.data(), 0, 0, events);
    return events;
}

void Algs::processTouchFrame(const std::int16_t* padValues, std::uint32_t frameNumber, std::uint32_t timeMs,
                             HIDEvents& events) {
    const float threshold = handStats.activationThreshold;
    Pixels::Lanes<std::int32_t> signals;
    std::fill(std::copy_n(padValues, kPadCount, signals.begin()), signals.end(), 0);
    pixels.updatePixelStates(signals, threshold);
    virtualImage.updateValues(pixels);
    VirtualPixels::Lanes<std::int32_t> sums;
    const auto narrowed = [](std::int32_t sum) { return static_cast<std::int16_t>(sum); };
    std::fill(std::ranges::transform(virtualImage.values, sums.begin(), narrowed).out, sums.end(), 0);
    virtualPixels.updatePixelStates(sums, threshold, virtualImage.maxPixelIndex);
    handStats.updateHandState(pixels, virtualPixels, timeMs);

    if (auto event = eventOfFrame()) {
        IOHIDEventSetIntegerValue(event.get(), kIOHIDEventFieldDigitizerGenerationCount, frameNumber);
        lastEventPhase = IOHIDEventGetPhase(event.get());
        events.push_back(std::move(event));
    }
    eventStats.update(handStats);
    if (os_log_type_enabled(log, OS_LOG_TYPE_DEBUG))
        logFrame(padValues, frameNumber, timeMs);
}

// The first rule that holds decides. A touch's end resets the touch's statistics, with an event or without.
Ref<HIDEvent> Algs::eventOfFrame() {
    const HandStats& hand = handStats;
    if (hand.touching && !hand.wasTouching)
        return createMayBeginEvent(hand.activeRegion);
    if (hand.holding && !hand.wasHolding)
        return createHoldStartEvent(hand.activeRegion);
    if (hand.holding && hand.wasHolding && hand.previousRegion != hand.activeRegion)
        return createHoldChangeEvent(hand.activeRegion);
    if (!hand.holding && hand.wasHolding) {
        Reset();
        return createHoldEndEvent(hand.activeRegion);
    }
    if (hand.tapDetected) {
        Reset();
        return createTapEvent(hand.activeRegion);
    }
    if (!hand.touching && hand.wasTouching) {
        Reset();
        return lastEventPhase == kIOHIDEventPhaseMayBegin ? createCancelEvent() : nullptr;
    }
    return nullptr;
}

void Algs::Reset() noexcept {
    pixels.resetGlobalStats();
    virtualPixels.resetGlobalStats();
    handStats.Reset();
}

// Each text is built only if the level is still enabled when its turn comes.
void Algs::logFrame(const std::int16_t* padValues, std::uint32_t frameNumber, std::uint32_t timeMs) const {
    const auto logSection = [&](std::string_view title, const auto& makeText) {
        if (os_log_type_enabled(log, OS_LOG_TYPE_DEBUG))
            os_log_with_type(log, OS_LOG_TYPE_DEBUG,
                             fmt::format("Frame {} @{}ms, *** {} ***\n{}", frameNumber, timeMs, title, makeText()));
    };
    logSection("Event Stats", [&] { return JSON::description(eventStats.statsDictionary().get()); });
    logSection("Touch State Description", [&] { return touchStateDescription(padValues, timeMs); });
    logSection("Virtual State Description", [&] { return virtualStateDescription(padValues, timeMs); });
}

} // namespace VeltoTouch
