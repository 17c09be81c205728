#pragma once
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>
namespace VeltoTouch::Reference {
enum class PixelRegion : std::int32_t { None = 0, PlayPause = 1, VolumeDown = 2, VolumeUp = 3 };

struct Pixel {
    std::int32_t value = 0;
    float gain = 0.0f, normalized = 0.0f, onPeak = 0.0f, offTrough = 0.0f;
    bool on = false, aboveNoise = false, everAboveNoise = false, everOn = false;
    float peakAboveNoise = 0.0f;
    std::int32_t index = 0;
    Pixel(int padIndex, float padGain) : gain(padGain), index(padIndex) {}
    void updatePixelState(int signal, float threshold) {
        value = std::int32_t(float(signal) * gain);
        const float level = on ? onPeak * 0.6f : offTrough / 0.6f > 1.0f ? offTrough / 0.6f : 1.0f;
        normalized = float(value) / threshold;
        on = normalized > level;
        if (on) {
            onPeak = normalized > onPeak ? normalized : onPeak;
            offTrough = normalized;
            everOn = true;
        } else {
            onPeak = normalized;
            offTrough = normalized < offTrough ? normalized : offTrough;
        }
        aboveNoise = value > 75;
        everAboveNoise = everAboveNoise || value >= 76;
        peakAboveNoise = value >= 76 && normalized > peakAboveNoise ? normalized : peakAboveNoise;
    }
    PixelRegion getPixelRegion() const {
        const int bit = index >= 0 && index <= 14 ? 1 << index : 0;
        const PixelRegion other = (bit & 0x43f) != 0 ? PixelRegion::PlayPause : PixelRegion::None;
        return (bit & 0x3c0) != 0 ? PixelRegion::VolumeUp : (bit & 0x7800) != 0 ? PixelRegion::VolumeDown : other;
    }
    void resetGlobalStats() {
        everAboveNoise = everOn = false;
        peakAboveNoise = 0.0f;
    }
};

struct VirtualPixel : Pixel {
    std::string name;
    VirtualPixel(int padIndex, float factor, const std::string& group) : Pixel(padIndex, factor), name(group) {}
    void updatePixelState(int groupValue, float threshold, int dominantPad) {
        Pixel::updatePixelState(groupValue, threshold);
        index = dominantPad;
    }
};

struct VirtualImage {
    std::vector<std::int32_t> values = std::vector<std::int32_t>(23, 0);
    std::vector<std::string> names = {"ABE",  "ABF",  "ADEF", "AEGJ", "BCEF", "BFHJ", "CDE", "CDF",
                                      "CELN", "DFLO", "EFK",  "EJK",  "EKL",  "FJK",  "FKL", "GHI",
                                      "GIJ",  "HIJ",  "IJK",  "KLM",  "LMN",  "LMO",  "MNO"};
    std::vector<std::int32_t> maxPixelIndex;
    std::vector<float> normalizationFactors = {0.6667f, 0.4444f, 0.6667f, 0.5714f, 0.6667f, 0.5714f, 0.6667f, 0.4651f,
                                               0.6667f, 0.6667f, 0.4f,    0.4f,    0.4f,    0.4f,    0.4f,    0.5714f,
                                               0.4f,    0.4f,    0.4f,    0.4f,    0.4444f, 0.5714f, 0.6667f};
    VirtualImage() {
        for (const std::string& name : names)
            maxPixelIndex.push_back(name.at(0) - 'A');
    }
    void updateValues(const std::vector<Pixel>& pixels) {
        values.assign(23, 0);
        for (std::size_t i = 0; i < 23; ++i)
            for (char letter : names[i]) {
                const std::int32_t v = pixels.at(std::size_t(letter - 'A')).value;
                values[i] += v >= 76 ? v : 0;
                if (v >= 76 && v > pixels.at(std::size_t(maxPixelIndex[i])).value)
                    maxPixelIndex[i] = letter - 'A';
            }
    }
};
} // namespace VeltoTouch::Reference
