#pragma once
#include "Tests/Reference/Counters.h"
#include "Tests/Reference/Hex.h"
namespace VeltoTouch::Reference {
struct Event {
    enum class Kind { Digitizer, Vendor };
    Kind kind = Kind::Digitizer;
    std::uint64_t timestamp = 0;
    std::uint32_t options = 0;
    std::uint16_t phase = 0;
    // Of digitizer events. The region travels in y; the generation count is the integer field 0x000B001B.
    std::uint32_t transducerType = 0, index = 0, identity = 0, eventMask = 0, buttonMask = 0;
    std::int64_t generationCount = 0;
    double x = 0.0, y = 0.0, z = 0.0, tipPressure = 0.0, barrelPressure = 0.0;
    bool range = false, touch = false;
    // Of vendor-defined events.
    std::uint32_t usagePage = 0, usage = 0, version = 0, payloadLength = 0;
    static Event digitizer(std::uint32_t mask, PixelRegion region, std::uint16_t phaseBits) {
        return {.phase = phaseBits, .transducerType = 2, .eventMask = mask, .y = double(region)};
    }
};

struct LogLine {
    std::string level, text;
};
struct Recognizer {
    std::vector<LogLine> log;
    bool debugLog = false; // log the three debug lines of every frame
    std::vector<Pixel> pixels;
    VirtualImage virtualImage;
    std::vector<VirtualPixel> virtualPixels;
    HandStats handStats;
    EventStats eventStats;
    std::uint16_t lastEventPhase = 0;
    Recognizer() {
        const float padGainTable[15] = {1.9219f, 1.8833f, 1.9281f, 1.8837f, 1.9163f, 1.8105f, 1.0081f, 1.0f,
                                        1.4851f, 1.5033f, 2.4154f, 1.5378f, 1.5431f, 1.04f,   1.0493f};
        for (int i = 0; i < 15; ++i)
            pixels.push_back(Pixel(i, padGainTable[i]));
        for (std::size_t i = 0; i < 23; ++i) {
            const std::string& name = virtualImage.names[i];
            virtualPixels.push_back(VirtualPixel(name.at(0), virtualImage.normalizationFactors[i], name));
        }
    }
    std::vector<Event> handleImage(const Image& image) {
        return processTouchFrame(image.padSignal.data(), image.frameNumber, image.timestampMs);
    }
    std::vector<Event> handleReset() { return handleImage(Image()); } // fifteen zeros in frame 0 at time 0
    std::vector<Event> processTouchFrame(const std::int16_t* pads, std::uint32_t frame, std::uint32_t time) {
        const float threshold = handStats.activationThreshold;
        for (std::size_t i = 0; i < 15; ++i)
            pixels.at(i).updatePixelState(pads[i], threshold);
        virtualImage.updateValues(pixels);
        for (std::size_t i = 0; i < 23; ++i) {
            const std::int16_t narrowed = std::int16_t(virtualImage.values.at(i));
            virtualPixels.at(i).updatePixelState(narrowed, threshold, virtualImage.maxPixelIndex.at(i));
        }
        handStats.updateHandState(pixels, virtualPixels, time);
        std::vector<Event> events = chooseEvent();
        for (Event& event : events) { // at most one
            event.generationCount = frame;
            lastEventPhase = event.phase;
        }
        eventStats.update(handStats);
        if (debugLog) {
            const std::string start = "Frame " + std::to_string(frame) + " @" + std::to_string(time) + "ms, *** ";
            log.push_back({"debug", start + "Event Stats ***\n" + eventStats.statsDictionary().dump(4)});
            log.push_back({"debug", start + "Touch State Description ***\n" + touchStateDescription(pads, time)});
            log.push_back({"debug", start + "Virtual State Description ***\n" + virtualStateDescription(time)});
        }
        return events;
    }
    std::vector<Event> chooseEvent() {
        const HandStats& hand = handStats;
        const PixelRegion region = hand.activeRegion;
        if (hand.touching && !hand.wasTouching)
            return {Event::digitizer(0, region, 0x80)}; // may begin
        if (hand.holding && !hand.wasHolding)
            return {Event::digitizer(0x2, region, 0x1)}; // hold start
        if (hand.holding && hand.wasHolding && hand.previousRegion != region)
            return {Event::digitizer(0x2, region, 0x2)}; // hold change
        const bool holdEnded = !hand.holding && hand.wasHolding;
        const bool touchEnded = !hand.touching && hand.wasTouching;
        if (holdEnded || hand.tapDetected || touchEnded)
            Reset();
        if (holdEnded)
            return {Event::digitizer(0x2, region, 0x4)}; // hold end
        if (hand.tapDetected)
            return {Event::digitizer(0x20000, region, 0)}; // tap
        if (touchEnded && lastEventPhase == 0x80)
            return {Event::digitizer(0, PixelRegion::None, 0x8)}; // cancel
        return {};
    }
    void Reset() {
        for (Pixel& pixel : pixels)
            pixel.resetGlobalStats();
        for (VirtualPixel& pixel : virtualPixels)
            pixel.resetGlobalStats();
        handStats.Reset();
    }
    // Keys of the settings come without their domain.
    void setState(const std::string& key, const Value& value) {
        std::string rest = key;
        if (key == "EnableHoldSuppression")
            handStats.enableHoldSuppression = boolReading(value);
        else if (key == "EnableTapSuppression")
            handStats.enableTapSuppression = boolReading(value);
        else if (key == "ResetEventStats")
            eventStats.Reset();
        else if (key == "ActivationThreshold")
            handStats.activationThreshold = floatReading(value);
        else if (key == "HoldTimeoutMilliseconds")
            handStats.holdTimeoutMs = std::uint32_t(unsignedReading(value)); // the low 32 bits
        else if (stripDomainFromKey(rest, "VirtualNormalizationFactors") && factorIndex(rest) < 23)
            virtualImage.normalizationFactors[factorIndex(rest)] = floatReading(value);
    }
    Value getState(const std::string& key) const {
        std::string rest = key;
        if (stripDomainFromKey(rest, "VirtualNormalizationFactors") && factorIndex(rest) < 23)
            return json(virtualImage.normalizationFactors[factorIndex(rest)]);
        return key == "EnableHoldSuppression"     ? Value(json(handStats.enableHoldSuppression))
               : key == "EnableTapSuppression"    ? Value(json(handStats.enableTapSuppression))
               : key == "HoldTimeoutMilliseconds" ? Value(json(handStats.holdTimeoutMs))
               : key == "ActivationThreshold"     ? Value(json(handStats.activationThreshold))
               : key == "EventStats"              ? Value(eventStats.statsDictionary())
               : key == "DebugInfo"               ? Value(json::object({{"EventStats", eventStats.statsDictionary()}}))
                                                  : Value();
    }
    // Reads the number at the start of the text; text without one is index 0.
    static unsigned long factorIndex(const std::string& text) {
        std::istringstream stream(text);
        unsigned long index = 0;
        return stream >> index ? index : 0;
    }
    std::string touchStateDescription(const std::int16_t* pads, std::uint32_t time) const {
        std::string text;
        for (std::size_t i = 0; i < 15; ++i) {
            const Pixel& pixel = pixels.at(i);
            text += (i > 0 ? ", " : "") + std::string(1, char('A' + pixel.index)) + "=" + fourWide(pads[i]);
            text += " " + fourWide(pixel.value) + (pixel.on ? "<==ON" : "");
        }
        return statistics() + ", [" + text + "] " + stateLine(time);
    }
    std::string virtualStateDescription(std::uint32_t time) const {
        std::string text;
        for (std::size_t i = 0; i < 23; ++i) {
            const VirtualPixel& pixel = virtualPixels.at(i);
            text += (i > 0 ? ", " : "") + pixel.name + "=" + fourWide(pixel.value) + (pixel.on ? "<==ON" : "");
        }
        return statistics() + ", [" + text + "] " + stateLine(time);
    }
    static std::string fourWide(int number) { return rightAligned(number, 4); }
    std::string statistics() const { // floats as "%f"
        return "ts=" + std::to_string(handStats.touchScore) + ", sd=" + std::to_string(handStats.signalPerDuration) +
               ", tsd=" + std::to_string(handStats.signalPerTouchDuration) +
               ", NonActivePixels=" + std::to_string(handStats.nonActivePixels) +
               ", TimeDurationRatio=" + std::to_string(handStats.timeDurationRatio) +
               ", TapSVMScore=" + std::to_string(handStats.tapSVMScore);
    }
    std::string stateLine(std::uint32_t time) const {
        const HandStats& hand = handStats;
        const std::string region = "ms ActiveRegion=" + std::to_string(int(hand.activeRegion));
        const std::string noise = hand.aboveNoise ? " ABOVENOISE" : " BELOWNOISE";
        // Durations are shown as signed numbers.
        const std::string untilNow = std::to_string(std::int32_t(time - hand.touchStartTime)) + region;
        const std::string untilEnd = std::to_string(std::int32_t(hand.touchEndTime - hand.touchStartTime)) + region;
        return hand.touching && !hand.wasTouching       ? "STARTTOUCH " + untilNow
               : hand.holding && hand.wasHolding        ? "HOLDING " + untilNow
               : hand.holding                           ? "STARTHOLD " + untilNow
               : hand.suppressingHold                   ? "SUPPRESSHOLD " + untilNow
               : hand.touching                          ? "TOUCHING " + untilNow
               : hand.wasHolding                        ? "ENDHOLD " + untilEnd + noise
               : hand.tapCandidate && !hand.tapDetected ? "SUPPRESSTAP " + untilNow + noise
               : hand.tapDetected                       ? "TAP " + untilEnd + noise
               : hand.wasTouching                       ? "ENDTOUCH " + untilEnd + noise
                                                        : std::string();
    }
};
} // namespace VeltoTouch::Reference
