#include "Plugin/Algs/Algs.h"

#include <cmath>
#include <iterator>

#include <fmt/format.h>

namespace VeltoTouch {
namespace {

using Text = fmt::memory_buffer;

constexpr std::string_view onMark(const Pixel& pixel) noexcept { return pixel.on ? "<==ON" : ""; }

// Six decimals, whatever the locale. NaN has no sign in a text.
void appendNumber(Text& text, std::string_view name, float number) {
    const double shown = std::isnan(number) ? std::fabs(static_cast<double>(number)) : static_cast<double>(number);
    fmt::format_to(std::back_inserter(text), "{}={:f}, ", name, shown);
}

void appendStatistics(Text& text, const HandStats& hand) {
    appendNumber(text, "ts", hand.touchScore);
    appendNumber(text, "sd", hand.signalPerDuration);
    appendNumber(text, "tsd", hand.signalPerTouchDuration);
    fmt::format_to(std::back_inserter(text), "NonActivePixels={}, ", hand.nonActivePixels);
    appendNumber(text, "TimeDurationRatio", hand.timeDurationRatio);
    appendNumber(text, "TapSVMScore", hand.tapSVMScore);
}

} // namespace

// Durations are shown signed: after a firmware reset (time 0) they are negative.
std::string Algs::stateLine(std::uint32_t timeMs) const {
    const HandStats& hand = handStats;
    const auto line = [&hand](std::string_view state, std::uint32_t endTime) {
        const auto duration = static_cast<std::int32_t>(elapsedMs(endTime, hand.touchStartTime));
        return fmt::format("{} {}ms ActiveRegion={}", state, duration, static_cast<std::int32_t>(hand.activeRegion));
    };
    const auto endLine = [&](std::string_view state, std::uint32_t endTime) {
        return line(state, endTime) + (hand.aboveNoise ? " ABOVENOISE" : " BELOWNOISE");
    };
    if (hand.touching && !hand.wasTouching)
        return line("STARTTOUCH", timeMs);
    if (hand.holding && hand.wasHolding)
        return line("HOLDING", timeMs);
    if (hand.holding)
        return line("STARTHOLD", timeMs);
    if (hand.suppressingHold)
        return line("SUPPRESSHOLD", timeMs);
    if (hand.touching)
        return line("TOUCHING", timeMs);
    if (hand.wasHolding)
        return endLine("ENDHOLD", hand.touchEndTime);
    if (hand.tapCandidate && !hand.tapDetected)
        return endLine("SUPPRESSTAP", timeMs);
    if (hand.tapDetected)
        return endLine("TAP", hand.touchEndTime);
    if (hand.wasTouching)
        return endLine("ENDTOUCH", hand.touchEndTime);
    return {};
}

std::string Algs::touchStateDescription(const std::int16_t* padValues, std::uint32_t timeMs) const {
    Text text;
    appendStatistics(text, handStats);
    for (std::size_t i = 0; i < kPadCount; ++i)
        fmt::format_to(std::back_inserter(text), "{}{}={:4} {:4}{}", i == 0 ? "[" : ", ", letterOf(i), padValues[i],
                       pixels[i].value, onMark(pixels[i]));
    fmt::format_to(std::back_inserter(text), "] {}", stateLine(timeMs));
    return fmt::to_string(text);
}

std::string Algs::virtualStateDescription(const std::int16_t* /*padValues*/, std::uint32_t timeMs) const {
    Text text;
    appendStatistics(text, handStats);
    for (std::size_t i = 0; i < kGroupCount; ++i)
        fmt::format_to(std::back_inserter(text), "{}{}={:4}{}", i == 0 ? "[" : ", ", virtualPixels[i].name,
                       virtualPixels[i].value, onMark(virtualPixels[i]));
    fmt::format_to(std::back_inserter(text), "] {}", stateLine(timeMs));
    return fmt::to_string(text);
}

} // namespace VeltoTouch
