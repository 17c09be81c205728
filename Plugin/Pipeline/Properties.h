#pragma once

#include "Platform/Value.h"
#include "Plugin/Algs/Settings.h"
#include "Plugin/Shared/Keys.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The service's properties by their full keys: the recognizer's settings and what is only read. One place judges what
// may be read and written. The service takes any value; its callers decide what to refuse.

namespace VeltoTouch {

// The setting under a full property key, such as "Pipeline.Algs.HoldTimeoutMilliseconds", in any spelling that the
// service reads.
[[nodiscard]] std::optional<FoundSetting> settingUnder(std::string_view key);

// A row's full key; for factors, what stands before the dot and N.
[[nodiscard]] std::string fullKeyOf(const SettingRow& row);
// A setting's, with the N of a factor.
[[nodiscard]] std::string fullKeyOf(const FoundSetting& setting);

// Every setting in the order of the rows, each factor one of its own.
[[nodiscard]] std::vector<FoundSetting> allSettings();

// A property that is no setting. It is only read.
struct PropertyRow {
    std::string_view key;
    std::string_view type;
    std::string_view meaning;
    bool isPublic; // listed, and readable by unprivileged callers: asks no device, discloses no touch
};
inline constexpr std::array kPropertyRows{
    PropertyRow{Keys::kEventStats, "dictionary", "gestures dispatched and rejected, by kind and region", true},
    PropertyRow{Keys::kDebugInfo, "dictionary", "firmware resets and gaps between frames", true},
    PropertyRow{Keys::kVersion, "array", "of the touch service", true},
    PropertyRow{Keys::kAlgsDebugInfo, "dictionary", "Pipeline.Algs.EventStats within a dictionary", false},
    PropertyRow{Keys::kRecording, "text", "what the service has seen, as velto record writes it", false},
    PropertyRow{Keys::kFirmwareDebugReports, "dictionary", "the device's ten debug reports", false},
    PropertyRow{Keys::kFactoryResetHoldDuration, "integer", "as the device gives it", false},
    PropertyRow{Keys::kServicePluginDebug, "dictionary", "versions, reports, recording and statistics in one", false},
};

// The values of a setting.
struct ValueKind {
    std::string_view name;
    std::string_view range;
    std::string_view bounds; // the range as JSON: an array of the least and the greatest
    std::string_view wanted; // name and range in a sentence
};
[[nodiscard]] const ValueKind& kindOf(const SettingRow& row) noexcept;

struct Judgement {
    enum class Verdict {
        Sensible,
        Doubtful,   // surely not meant
        OutOfRange, // a number beyond the setting's range
        NoNumber,   // the service reads it as 0
        ReadOnly,
        WriteOnly,
        Unknown,
    };
    Verdict verdict = Verdict::Sensible;
    std::string reason; // what is wanted, or what is doubtful; empty if the verdict says it all
};

// What callers say where the service refuses to read or write.
inline constexpr const char* kNoValue = "there is no value under this key";
inline constexpr const char* kValueNotTaken = "the device does not take this value";

// Returns whether a property is readable by unprivileged callers: the settings, and the public rows.
[[nodiscard]] bool isPublic(const std::string& key);

// Judge what a caller is about to write or read. Keys outside the pipeline are the device's and are Sensible. A
// factor's number must be plain decimal; other spellings that the service reads are Unknown. Any thread.
[[nodiscard]] Judgement judgeWrite(const std::string& key, const Value* value);
[[nodiscard]] Judgement judgeRead(const std::string& key);

} // namespace VeltoTouch
