#pragma once

#include "Plugin/Reports/Regions.h"
#include "Velto/Analysis/Setting.h"
#include "Velto/Host/Gesture.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

// What is known of a touch: when and where it was, what it gave, and every check that decided it. Plain values; the
// observer (TouchObserver.h) makes them. Times are nanoseconds from the recording's first frame.

namespace VeltoTouch::Analysis {

enum class Outcome : std::uint8_t { Tap, Hold, Cancel, Unfinished };
inline constexpr std::array<std::string_view, 4> kOutcomeNames{"tap", "hold", "cancel", "unfinished"};

// The recognizer's checks, in its order, and what else keeps a contact from becoming a touch.
enum class Rule : std::uint8_t {
    Activation,
    HoldTimeout,
    TouchScore,
    StaleTimeout,
    SignalPerTouchDuration,
    SignalPerDuration,
    NonActivePixels,
    TimeDurationRatio,
    TapScore,
    Residual, // reason of a weak contact alone: its level was raised by what was left of the press before
};

struct RuleRow {
    Rule rule;
    std::string_view name;
    std::string_view op; // the check holds if VALUE op BOUND
    std::string_view unit;
    std::string_view setting; // that switches or moves it
    std::string_view phrase;  // the rule as the reason in a sentence: "cancel, because of the tap score"
};

inline constexpr std::array<RuleRow, 10> kRuleRows{{
    {Rule::Activation, "activation", ">", "count", kActivationThreshold, "the activation threshold"},
    {Rule::HoldTimeout, "holdTimeout", ">", "ms", kHoldTimeout, "the hold time-out"},
    {Rule::TouchScore, "touchScore", ">=", "score", kHoldSuppression, "the touch score"},
    {Rule::StaleTimeout, "staleTimeout", ">", "flag", kHoldSuppression, "a time-out flag that was left"},
    {Rule::SignalPerTouchDuration, "signalPerTouchDuration", ">", "count/ms", kTapSuppression,
     "a weak signal for its time touching"},
    {Rule::SignalPerDuration, "signalPerDuration", ">=", "count/ms", kTapSuppression, "a weak signal for its time"},
    {Rule::NonActivePixels, "nonActivePixels", ">=", "pixels", kTapSuppression, "too many idle pads above noise"},
    {Rule::TimeDurationRatio, "timeDurationRatio", ">=", "ratio", kTapSuppression,
     "the short share of its time touching"},
    {Rule::TapScore, "tapScore", ">=", "score", kTapSuppression, "the tap score"},
    {Rule::Residual, "residual", ">", "count", kActivationThreshold, "what was left of the press before"},
}};

[[nodiscard]] constexpr const RuleRow& rowOf(Rule rule) noexcept { return kRuleRows[static_cast<std::size_t>(rule)]; }

struct Check {
    Rule rule = Rule::Activation;
    double value = 0; // the recognizer's number
    double bound = 0;
    std::optional<bool> passed = {};       // none: a fork, not a test
    std::vector<float> contributions = {}; // of the two scores, see Pulls.h; empty if they were not asked for
};

// What moved the active region.
enum class MovedBy : std::uint8_t { PeakPad, LastGestureBias, PadK, HoldMoved };
inline constexpr std::array<std::string_view, 4> kMovedByNames{"peakPad", "lastGestureBias", "padK", "holdMoved"};

struct RegionChange {
    std::uint64_t ns = 0;
    PixelRegion region = PixelRegion::None;
    MovedBy by = MovedBy::PeakPad;
};

struct TouchEvent {
    std::uint64_t ns = 0;
    GestureKind kind = GestureKind::MayBegin;
    std::optional<PixelRegion> region = {};
};

struct Peak {
    std::string_view pixel; // a pad's letter or a group's name, of static lifetime; empty if nothing was on
    float value = 0;        // in counts
};

// The settings that change recognition.
struct SettingsInForce {
    std::uint32_t holdTimeoutMs = 0;
    float activationThreshold = 0;
    bool enableHoldSuppression = false;
    bool enableTapSuppression = false;
};

// The value of a setting that gives the touch another outcome.
struct Alternative {
    Setting setting;
    std::optional<Outcome> outcome = {}; // none: no touch is left
};

struct Touch {
    enum class EndedBy : std::uint8_t { Setting, Clock };

    std::size_t number = 0; // from 1
    std::uint64_t startNs = 0;
    std::uint64_t endNs = 0;
    std::uint32_t startFrame = 0; // the device's frame numbers
    std::uint32_t endFrame = 0;
    Outcome outcome = Outcome::Unfinished;
    std::vector<TouchEvent> events = {};
    PixelRegion region = PixelRegion::None; // of the deciding event; without one, where the touch was last
    std::vector<RegionChange> path = {};    // the first entry is the start's
    Peak peak = {};
    std::vector<Check> checks = {}; // those that were asked
    bool isCutByReset = false;
    std::optional<EndedBy> endedBy = {};   // what ended a hold that was still touching
    std::vector<Alternative> wouldBe = {}; // found by WouldBe.h

    SettingsInForce inForce = {};                   // at its start
    std::optional<std::uint32_t> latestHoldMs = {}; // highest elapsed time at which the touch score let it be a hold

    [[nodiscard]] double durationMs() const noexcept { return static_cast<double>(endNs - startNs) / 1e6; }

    // The first check that failed; none for what became a gesture or is unfinished.
    [[nodiscard]] std::optional<Rule> reason() const noexcept {
        if (outcome != Outcome::Cancel)
            return std::nullopt;
        for (const Check& check : checks) {
            if (check.passed == false)
                return check.rule;
        }
        return std::nullopt;
    }
};

[[nodiscard]] inline bool isGesture(const Touch& touch) noexcept {
    return touch.outcome == Outcome::Tap || touch.outcome == Outcome::Hold;
}

// A stretch above noise, outside of touches, in which something reached half of the level that it had to exceed, and
// nothing turned on.
struct WeakContact {
    std::size_t number = 0; // from 1, of their own
    std::uint64_t startNs = 0;
    std::uint64_t endNs = 0;
    std::uint32_t startFrame = 0;
    std::uint32_t endFrame = 0;
    Peak peak = {};
    Check check = {}; // Activation or Residual, not passed

    [[nodiscard]] double durationMs() const noexcept { return static_cast<double>(endNs - startNs) / 1e6; }
};

[[nodiscard]] constexpr std::string_view nameOf(Rule rule) noexcept { return rowOf(rule).name; }
[[nodiscard]] constexpr std::string_view nameOf(Outcome outcome) noexcept {
    return kOutcomeNames[static_cast<std::size_t>(outcome)];
}
[[nodiscard]] constexpr std::string_view nameOf(MovedBy by) noexcept {
    return kMovedByNames[static_cast<std::size_t>(by)];
}
[[nodiscard]] constexpr std::string_view nameOf(Touch::EndedBy by) noexcept {
    return by == Touch::EndedBy::Setting ? "setting" : "clock";
}

} // namespace VeltoTouch::Analysis
