#pragma once

#include "Platform/HIDEvent.h"
#include "Plugin/Reports/InputReport.h"
#include "Plugin/Reports/Regions.h"

#include <array>
#include <ostream>
#include <string>
#include <string_view>

#include <fmt/format.h>
#include <gmock/gmock.h>

// Matchers of HID events, in the words in which tests and their failures speak: Tap(VolumeUp).
// Elements of `HIDEvents` print as "Tap(VolumeUp) at frame 17".

namespace VeltoTouch {
namespace Tests {

using enum PixelRegion;

struct KnownGesture {
    std::string_view name;
    std::uint32_t eventMask;
    std::uint16_t phase;
};

inline constexpr std::array<KnownGesture, 6> kKnownGestures{{
    {"MayBegin", 0, 0x80},
    {"HoldStart", 0x2, 0x1},
    {"HoldChange", 0x2, 0x2},
    {"HoldEnd", 0x2, 0x4},
    {"Tap", 0x20000, 0},
    {"Cancel", 0, 0x8},
}};

// What the event says: the gesture and its region, or the raw fields where they make up no gesture.
inline std::string gestureTextOf(const HIDEvent& event) {
    if (const auto* vendor = std::get_if<VendorDefined>(&event.payload)) {
        if (vendor->usagePage == InputReport::FirmwareEvent::kResetUsagePage &&
            vendor->usage == InputReport::FirmwareEvent::kResetUsage)
            return "FirmwareReset()";
        return fmt::format("vendor-defined event (usage page {:#x}, usage {:#x})", vendor->usagePage, vendor->usage);
    }
    const auto& finger = std::get<Digitizer>(event.payload);
    const auto region = static_cast<std::size_t>(finger.y);
    for (const KnownGesture& kind : kKnownGestures) {
        if (finger.eventMask != kind.eventMask || event.phase != kind.phase || finger.y != static_cast<double>(region))
            continue;
        if (kind.name == "Cancel" && region == 0)
            return "Cancel()";
        if (region < kRegionCount)
            return fmt::format("{}({})", kind.name, nameOf(static_cast<PixelRegion>(region)));
    }
    return fmt::format("digitizer event (mask {:#x}, phase {:#x}, y {})", finger.eventMask, event.phase, finger.y);
}

inline std::string textOf(const HIDEvent& event) {
    const auto* finger = std::get_if<Digitizer>(&event.payload);
    return finger != nullptr ? fmt::format("{} at frame {}", gestureTextOf(event), finger->generationCount)
                             : gestureTextOf(event);
}

// Matches an event that reads so, in any frame unless one is given.
struct GestureMatcher {
    using is_gtest_matcher = void;

    [[nodiscard]] GestureMatcher atFrame(std::uint32_t frame) const {
        return {fmt::format("{} at frame {}", text, frame)};
    }
    bool MatchAndExplain(const Ref<HIDEvent>& event, std::ostream* /*explanation*/) const {
        return event && (gestureTextOf(*event) == text || textOf(*event) == text);
    }
    void DescribeTo(std::ostream* out) const { *out << "is " << text; }
    void DescribeNegationTo(std::ostream* out) const { *out << "is not " << text; }

    std::string text;
};

inline GestureMatcher MayBegin(PixelRegion region) { return {fmt::format("MayBegin({})", nameOf(region))}; }
inline GestureMatcher HoldStart(PixelRegion region) { return {fmt::format("HoldStart({})", nameOf(region))}; }
inline GestureMatcher HoldChange(PixelRegion region) { return {fmt::format("HoldChange({})", nameOf(region))}; }
inline GestureMatcher HoldEnd(PixelRegion region) { return {fmt::format("HoldEnd({})", nameOf(region))}; }
inline GestureMatcher Tap(PixelRegion region) { return {fmt::format("Tap({})", nameOf(region))}; }
inline GestureMatcher Cancel() { return {"Cancel()"}; }
inline GestureMatcher FirmwareReset() { return {"FirmwareReset()"}; }

} // namespace Tests

inline void PrintTo(PixelRegion region, std::ostream* out) { *out << nameOf(region); }
inline void PrintTo(const Ref<HIDEvent>& event, std::ostream* out) {
    *out << (event ? Tests::textOf(*event) : "no event");
}

} // namespace VeltoTouch
