#include "Velto/Host/Gesture.h"

#include "Plugin/Reports/InputReport.h"
#include "Plugin/Reports/Regions.h"

#include <algorithm>
#include <array>

namespace VeltoTouch {
namespace {

using InputReport::FirmwareEvent;

// How a kind of gesture stands in an event.
struct Row {
    GestureKind kind;
    std::string_view name;
    std::uint32_t type;
    std::uint32_t phase;
    std::uint32_t eventMask;
    bool hasRegion;
};

using enum GestureKind;
// In the order of the kinds.
constexpr std::array<Row, 7> kRows{{
    {MayBegin, "mayBegin", kIOHIDEventTypeDigitizer, kIOHIDEventPhaseMayBegin, 0, true},
    {HoldStart, "holdStart", kIOHIDEventTypeDigitizer, kIOHIDEventPhaseBegan, kIOHIDDigitizerEventTouch, true},
    {HoldChange, "holdChange", kIOHIDEventTypeDigitizer, kIOHIDEventPhaseChanged, kIOHIDDigitizerEventTouch, true},
    {HoldEnd, "holdEnd", kIOHIDEventTypeDigitizer, kIOHIDEventPhaseEnded, kIOHIDDigitizerEventTouch, true},
    {Tap, "tap", kIOHIDEventTypeDigitizer, kIOHIDEventPhaseUndefined, kIOHIDDigitizerEventTap, true},
    {Cancel, "cancel", kIOHIDEventTypeDigitizer, kIOHIDEventPhaseCancelled, 0, false},
    {FirmwareReset, "firmwareReset", kIOHIDEventTypeVendorDefined, kIOHIDEventPhaseUndefined, 0, false},
}};

const Row& rowOf(GestureKind kind) noexcept { return kRows[static_cast<std::size_t>(kind)]; }

std::uint32_t unsignedField(const HIDEvent& event, IOHIDEventField field) noexcept {
    return static_cast<std::uint32_t>(IOHIDEventGetIntegerValue(&event, field));
}

bool isOf(const Row& row, const HIDEvent& event) noexcept {
    return row.type == IOHIDEventGetType(&event) && row.phase == IOHIDEventGetPhase(&event) &&
           row.eventMask == unsignedField(event, kIOHIDEventFieldDigitizerEventMask);
}

bool isReset(const HIDEvent& event) noexcept {
    return unsignedField(event, kIOHIDEventFieldVendorDefinedUsagePage) == FirmwareEvent::kResetUsagePage &&
           unsignedField(event, kIOHIDEventFieldVendorDefinedUsage) == FirmwareEvent::kResetUsage;
}

std::optional<PixelRegion> regionOf(const HIDEvent& event) noexcept {
    const double y = IOHIDEventGetFloatValue(&event, kIOHIDEventFieldDigitizerY);
    const bool isKnown = y >= 0.0 && y < static_cast<double>(kRegionCount);
    return isKnown ? std::optional(static_cast<PixelRegion>(y)) : std::nullopt;
}

} // namespace

std::optional<Gesture> gestureOf(const HIDEvent& event) noexcept {
    const auto* const row = std::ranges::find_if(kRows, [&event](const Row& each) { return isOf(each, event); });
    if (row == kRows.end() || (row->kind == FirmwareReset && !isReset(event)))
        return std::nullopt;
    return Gesture{.kind = row->kind,
                   .region = row->hasRegion ? regionOf(event) : std::nullopt,
                   .frame = unsignedField(event, kIOHIDEventFieldDigitizerGenerationCount),
                   .time = hostTimeOf(IOHIDEventGetTimeStamp(&event))};
}

void translateEvents(std::span<const Ref<HIDEvent>> events, std::vector<Gesture>& gestures) {
    gestures.clear();
    for (const Ref<HIDEvent>& event : events) {
        if (const auto gesture = gestureOf(*event))
            gestures.push_back(*gesture);
    }
}

EventMembers eventMembersOf(const Gesture& gesture) noexcept {
    const Row& row = rowOf(gesture.kind);
    const bool isReset = gesture.kind == FirmwareReset;
    return {.phase = row.phase,
            .eventMask = row.eventMask,
            .y = static_cast<double>(gesture.region.value_or(PixelRegion::None)),
            .usagePage = isReset ? FirmwareEvent::kResetUsagePage : 0,
            .usage = isReset ? FirmwareEvent::kResetUsage : 0};
}

std::string_view nameOf(GestureKind kind) noexcept { return rowOf(kind).name; }

std::optional<GestureKind> gestureKindCalled(std::string_view name) noexcept {
    const auto* const row = std::ranges::find(kRows, name, &Row::name);
    return row == kRows.end() ? std::nullopt : std::optional(row->kind);
}

} // namespace VeltoTouch
