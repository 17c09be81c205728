#pragma once

#include "Platform/Value.h"
#include "Plugin/Algs/EventStats.h"
#include "Plugin/Algs/HandStats.h"
#include "Plugin/Algs/VirtualImage.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>

namespace VeltoTouch {

// A setting of the recognizer. Reading, writing, judging, lists and completion all use its row; the default is the
// value in a new recognizer. A new setting is a row here and the place that it names. A new kind of place is a type in
// `Place`: the compiler finds the visits that lack it, not the tests by `is<>` in Properties.cpp and Sweeps.cpp.
struct SettingRow {
    // Where the setting is kept. The kind of the place decides which values it takes.
    using Switch = bool HandStats::*;
    using Milliseconds = std::uint32_t HandStats::*;
    using Divisor = float HandStats::*;                             // of what is compared; 0 or less is doubted
    using Factors = std::array<float, kGroupCount> VirtualImage::*; // one for each N under the key, a dot and N
    using Action = void (EventStats::*)() noexcept;                 // done by each write, whatever its value
    using Place = std::variant<Switch, Milliseconds, Divisor, Factors, Action>;

    std::string_view key; // without domain
    Place place;
    std::string_view meaning;

    template <class Kind>
    [[nodiscard]] constexpr bool is() const noexcept {
        return std::holds_alternative<Kind>(place);
    }
};

inline constexpr std::array kSettingRows{
    SettingRow{"HoldTimeoutMilliseconds", &HandStats::holdTimeoutMs, "how long a touch must last to become a hold"},
    SettingRow{"ActivationThreshold", &HandStats::activationThreshold,
               "divisor of every pad's value; smaller is more sensitive"},
    SettingRow{"EnableHoldSuppression", &HandStats::enableHoldSuppression,
               "contacts that do not look like a finger become no hold"},
    SettingRow{"EnableTapSuppression", &HandStats::enableTapSuppression,
               "contacts that do not look like a tap become none"},
    SettingRow{"VirtualNormalizationFactors", &VirtualImage::normalizationFactors,
               "factor of a group of pads; recognition keeps the one it started with"},
    SettingRow{"ResetEventStats", &EventStats::Reset, "any write clears the counters"},
};

struct FoundSetting {
    const SettingRow& row;
    std::size_t factor; // N; 0 for what is no factor
};

// The setting under a key without domain. The N of a factor is read as a stream reads an unsigned number: what follows
// the number is ignored, what is no number is 0, a negative one wraps.
[[nodiscard]] std::optional<FoundSetting> findSetting(std::string_view key);

// Return a setting's value, and its value in a new recognizer; nil for an action.
[[nodiscard]] Ref<Value> valueOf(const FoundSetting& setting, const HandStats& hand, const VirtualImage& image);
[[nodiscard]] Ref<Value> defaultOf(const FoundSetting& setting);

} // namespace VeltoTouch
