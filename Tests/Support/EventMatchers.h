#pragma once

#include "Algs/PixelRegion.h"
#include "Pipeline/Pipeline.h"
#include "Platform/HIDEvent.h"

#include <array>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include <fmt/format.h>
#include <gmock/gmock.h>

// Matchers of HID events, in the words in which tests and their failures speak: Tap(VolumeUp).
// Elements of `HIDEvents` print as "Tap(VolumeUp) at frame 17".

namespace VeltoTouch {
namespace Tests {

using enum PixelRegion;

inline constexpr std::array<const char*, kRegionCount> kRegionNames{"None", "PlayPause", "VolumeDown", "VolumeUp"};

inline std::string nameOf(PixelRegion region) { return kRegionNames.at(static_cast<std::size_t>(region)); }

struct GestureKind {
    const char* name;
    std::uint32_t eventMask;
    std::uint16_t phase;
};

inline constexpr std::array<GestureKind, 6> kGestureKinds{{
    {"MayBegin", 0, 0x80},
    {"HoldStart", 0x2, 0x1},
    {"HoldChange", 0x2, 0x2},
    {"HoldEnd", 0x2, 0x4},
    {"Tap", 0x20000, 0},
    {"Cancel", 0, 0x8},
}};

// What the event says: the gesture and its region, or the raw fields where they make up no gesture.
inline std::string gestureOf(const HIDEvent& event) {
    if (const auto* vendor = std::get_if<VendorDefined>(&event.payload)) {
        if (vendor->usagePage == Pipeline::kResetUsagePage && vendor->usage == Pipeline::kResetUsage)
            return "FirmwareReset()";
        return fmt::format("vendor-defined event (usage page {:#x}, usage {:#x})", vendor->usagePage, vendor->usage);
    }
    const auto& finger = std::get<Digitizer>(event.payload);
    for (const GestureKind& kind : kGestureKinds) {
        if (finger.eventMask != kind.eventMask || event.phase != kind.phase)
            continue;
        if (std::string_view(kind.name) == "Cancel" && finger.y == 0)
            return "Cancel()";
        for (std::size_t region = 0; region < kRegionCount; ++region) {
            if (finger.y == static_cast<double>(region))
                return fmt::format("{}({})", kind.name, kRegionNames.at(region));
        }
    }
    return fmt::format("digitizer event (mask {:#x}, phase {:#x}, y {})", finger.eventMask, event.phase, finger.y);
}

// Matches an event that says the same; where a frame is given, in that frame.
class GestureMatcher {
public:
    using is_gtest_matcher = void;

    explicit GestureMatcher(std::string gesture) : _gesture(std::move(gesture)) {}

    [[nodiscard]] GestureMatcher atFrame(std::uint32_t frame) const {
        GestureMatcher matcher = *this;
        matcher._frame = frame;
        return matcher;
    }

    bool MatchAndExplain(const Ref<HIDEvent>& event, std::ostream* /*explanation*/) const {
        return event && gestureOf(*event) == _gesture &&
               (!_frame || IOHIDEventGetIntegerValue(event.get(), kIOHIDEventFieldDigitizerGenerationCount) == *_frame);
    }
    void DescribeTo(std::ostream* out) const { *out << "is " << words(); }
    void DescribeNegationTo(std::ostream* out) const { *out << "is not " << words(); }

private:
    [[nodiscard]] std::string words() const {
        return _frame ? fmt::format("{} at frame {}", _gesture, *_frame) : _gesture;
    }

    std::string _gesture;
    std::optional<std::uint32_t> _frame;
};

inline GestureMatcher gesture(const char* kind, PixelRegion region) {
    return GestureMatcher(fmt::format("{}({})", kind, nameOf(region)));
}
inline GestureMatcher MayBegin(PixelRegion region) { return gesture("MayBegin", region); }
inline GestureMatcher HoldStart(PixelRegion region) { return gesture("HoldStart", region); }
inline GestureMatcher HoldChange(PixelRegion region) { return gesture("HoldChange", region); }
inline GestureMatcher HoldEnd(PixelRegion region) { return gesture("HoldEnd", region); }
inline GestureMatcher Tap(PixelRegion region) { return gesture("Tap", region); }
inline GestureMatcher Cancel() { return GestureMatcher("Cancel()"); }
inline GestureMatcher FirmwareReset() { return GestureMatcher("FirmwareReset()"); }

} // namespace Tests

inline void PrintTo(PixelRegion region, std::ostream* out) { *out << Tests::nameOf(region); }

inline void PrintTo(const Ref<HIDEvent>& event, std::ostream* out) {
    if (!event) {
        *out << "no event";
        return;
    }
    *out << Tests::gestureOf(*event);
    if (std::holds_alternative<Digitizer>(event->payload))
        *out << " at frame " << IOHIDEventGetIntegerValue(event.get(), kIOHIDEventFieldDigitizerGenerationCount);
}

} // namespace VeltoTouch
