#pragma once
#include "Tests/Reference/Classifier.h"
#include <cmath>
namespace VeltoTouch::Reference {
// All times are milliseconds of the device; their differences wrap as unsigned 32-bit numbers.
struct HandStats {
    using Pixels = std::vector<Pixel>;
    using Groups = std::vector<VirtualPixel>;
    SVM svm;
    float touchScore = 0.0f, decayParameter = 7.3890562f, activationThreshold = 200.0f;
    std::uint32_t holdTimeoutMs = 500;
    float holdScoreThreshold = 0.0f, touchScoreLimit = 100.0f, peakSignal = 0.0f;
    bool enableHoldSuppression = true, enableTapSuppression = true;
    bool touching = false, wasTouching = false, aboveNoise = false, wasAboveNoise = false;
    bool holding = false, wasHolding = false, suppressingHold = false, wasSuppressingHold = false;
    bool tapCandidate = false, tapDetected = false, tapRejected = false;
    bool holdTimedOut = false, wasHoldTimedOut = false;
    std::uint32_t touchStartTime = 0, touchEndTime = 0, aboveNoiseTime = 0, belowNoiseTime = 0, lastEventTime = 0;
    float signalPerDuration = 0.0f, signalPerTouchDuration = 0.0f, timeDurationRatio = 0.0f;
    std::int32_t nonActivePixels = 0;
    float tapSVMScore = 0.0f;
    PixelRegion activeRegion{}, previousRegion{}, eventRegion{}; // None
    float peakValue = 0.0f;
    std::int32_t peakPixel = 0;
    std::vector<float> regionMax = {0.0f, 0.0f, 0.0f, 0.0f};
    void SetDecayParameters() { decayParameter = 7.3890562f; }
    void Reset() {
        touchScore = peakSignal = peakValue = 0.0f;
        peakPixel = 0;
    }
    void updateHandState(const Pixels& pixels, const Groups& groups, std::uint32_t time) {
        std::vector<Pixel> records = pixels;
        records.insert(records.end(), groups.begin(), groups.end());
        wasTouching = touching;
        wasAboveNoise = aboveNoise;
        touching = aboveNoise = false;
        float strongest = 0.0f;
        int pad = 0;
        for (const Pixel& record : records) {
            const float m = record.normalized > 0.0f ? record.normalized : 0.0f;
            aboveNoise = aboveNoise || record.aboveNoise;
            touching = touching || record.on;
            if (record.on && m > peakValue) {
                peakValue = m;
                peakPixel = record.index;
            }
            if (m > strongest) {
                strongest = m;
                pad = record.index;
            }
        }
        if (touching)
            activeRegion = holding ? changeActiveRegion(pixels, pad) : updateActiveRegion(pixels, groups, time);
        aboveNoiseTime = aboveNoise && !wasAboveNoise ? time : aboveNoiseTime;
        belowNoiseTime = !aboveNoise && wasAboveNoise ? time : belowNoiseTime;
        touchStartTime = touching && !wasTouching ? time : touchStartTime;
        touchEndTime = !touching && wasTouching ? time : touchEndTime;
        updateTouchScore(pixels, groups, time);
        updateTapRejection(pixels, groups);
        updateGestureState(time);
    }
    PixelRegion updateActiveRegion(const Pixels& pixels, const Groups& groups, std::uint32_t time) {
        PixelRegion region = pixels.at(std::size_t(peakPixel)).getPixelRegion();
        // Highest peak first; pads with equal peaks keep pad order.
        std::vector<Pixel> sorted;
        for (const Pixel& pixel : pixels) {
            auto place = sorted.begin();
            while (place != sorted.end() && !(pixel.peakAboveNoise > place->peakAboveNoise))
                ++place;
            sorted.insert(place, pixel);
        }
        const Pixel& first = sorted.at(0);
        const Pixel& second = sorted.at(1);
        const float bias = updateTimeBiasFactor(time);
        const float noise = 75.0f / activationThreshold;
        if (region != eventRegion && second.peakAboveNoise > noise && first.getPixelRegion() == region &&
            second.getPixelRegion() == eventRegion && second.peakAboveNoise > first.peakAboveNoise * bias)
            region = eventRegion;
        const float smaller = bias < 0.7f ? bias : 0.7f;
        const float peakK = pixels.at(10).peakAboveNoise;
        if (peakPixel == 10 && first.index == 10 && second.peakAboveNoise > noise) {
            const float down = eventRegion == PixelRegion::VolumeDown ? smaller : 0.7f;
            const float up = eventRegion == PixelRegion::VolumeUp ? smaller : 0.7f;
            if (second.index == 12 && groups.at(19).peakAboveNoise > down * peakK)
                region = PixelRegion::VolumeDown;
            if (second.index == 8 && groups.at(18).peakAboveNoise > up * peakK)
                region = PixelRegion::VolumeUp;
        }
        updateRegionMax(pixels);
        return region;
    }
    PixelRegion changeActiveRegion(const Pixels& pixels, int pad) {
        const PixelRegion current = activeRegion;
        previousRegion = current;
        const PixelRegion candidate = pixels.at(std::size_t(pad)).getPixelRegion();
        if (candidate == current || current == PixelRegion::None || candidate == PixelRegion::None)
            return candidate;
        const float m0 = regionMax.at(std::size_t(current));
        const float before = m0 > 0.0f ? regionMax.at(std::size_t(candidate)) / m0 : 0.0f;
        updateRegionMax(pixels);
        const float m1 = regionMax.at(std::size_t(current));
        const float fall = m0 - m1 > 0.0f ? m0 - m1 : 0.0f;
        const float f = fuzzifyAndClip(m0 > 0.0f ? fall / m0 : 0.0f, 0.2f, 0.5f, 1.3f, 5.0f);
        const bool stays = m1 > 0.0f && regionMax.at(std::size_t(candidate)) / m1 < before * f;
        return stays ? current : candidate;
    }
    void updateRegionMax(const Pixels& pixels) {
        regionMax.assign(4, 0.0f);
        for (const Pixel& pixel : pixels) {
            float& maximum = regionMax.at(std::size_t(pixel.getPixelRegion()));
            const float excess = float(pixel.value) - 75.0f;
            maximum = pixel.getPixelRegion() != PixelRegion::None && excess > maximum ? excess : maximum;
        }
    }
    void updateTouchScore(const Pixels& pixels, const Groups& groups, std::uint32_t time) {
        svm.updateSVMScore(pixels, groups, activationThreshold);
        if (aboveNoise && !wasAboveNoise && touchScore != 0.0f)
            decayTouchScore(time);
        touchScore = std::clamp(touchScore + svm.score, -touchScoreLimit, touchScoreLimit);
    }
    void decayTouchScore(std::uint32_t time) {
        const double x = double(time - belowNoiseTime - 1u);
        const double k = 1.0 - std::exp(x) / (double(decayParameter) - 1.0);
        const double kept = k * std::fabs(double(touchScore));
        touchScore = float(std::copysign(kept > 0.0 ? kept : 0.0, double(touchScore)));
    }
    void updateTapRejection(const Pixels& pixels, const Groups& groups) {
        peakSignal = peakValue * activationThreshold;
        const std::uint32_t duration = std::min(touchEndTime - aboveNoiseTime, touchEndTime - lastEventTime);
        const std::uint32_t onDuration = touchEndTime - touchStartTime;
        signalPerDuration = duration != 0 ? peakSignal / float(duration) - 0.51f : 0.0f;
        timeDurationRatio = duration != 0 ? float(onDuration) / float(duration) - 0.25f : 0.0f;
        signalPerTouchDuration = onDuration != 0 ? peakSignal / float(onDuration) - 0.65f : 0.0f;
        // Records that rose above noise during this touch but never turned on are not active.
        nonActivePixels = 21;
        for (const Pixel& pixel : pixels)
            nonActivePixels -= pixel.everAboveNoise && !pixel.everOn ? 1 : 0;
        for (const VirtualPixel& group : groups)
            nonActivePixels -= group.everAboveNoise && !group.everOn ? 1 : 0;
        const float touchTerm = 0.2772f * signalPerDuration + 2.7205f * timeDurationRatio;
        tapSVMScore = 0.1886f * float(nonActivePixels) + touchTerm - 2.4116f;
        tapRejected = signalPerTouchDuration <= 0.0f || signalPerDuration < 0.0f || nonActivePixels < 0 ||
                      timeDurationRatio < 0.0f || tapSVMScore < 0.0f;
    }
    void updateGestureState(std::uint32_t time) {
        wasHolding = holding;
        wasHoldTimedOut = holdTimedOut;
        wasSuppressingHold = suppressingHold;
        // Without touch nothing is timed out, and the flags set here fall.
        const bool timedOut = touching && time - touchStartTime > holdTimeoutMs;
        const bool low = touchScore < holdScoreThreshold;
        holding = timedOut && (!enableHoldSuppression || wasHolding || !low);
        if (enableHoldSuppression) {
            suppressingHold = timedOut && low && !wasHolding;
            holdTimedOut = timedOut;
        }
        const bool touchEnded = !touching && wasTouching;
        tapCandidate = touchEnded && !wasHoldTimedOut;
        tapDetected = tapCandidate && (!enableTapSuppression || !tapRejected);
        if (enableTapSuppression && (!touchEnded || wasHoldTimedOut))
            tapRejected = false; // a candidate needs an ended touch, so there is none to clear
        if (tapDetected || (wasHolding && !holding)) {
            lastEventTime = time;
            eventRegion = activeRegion;
        }
    }
    static float fuzzify(float x, float x0, float x1, float y0, float y1) {
        const float a = (x - x0) / (x1 - x0);
        return a * y1 + (1.0f - a) * y0;
    }
    static float fuzzifyAndClip(float x, float x0, float x1, float y0, float y1) {
        return x <= x0 ? y0 : x >= x1 ? y1 : fuzzify(x, x0, x1, y0, y1);
    }
    float updateTimeBiasFactor(std::uint32_t time) const {
        return fuzzifyAndClip(float(double(time - lastEventTime) * 0.001), 0.3f, 1.0f, 0.65f, 1.0f);
    }
};
} // namespace VeltoTouch::Reference
