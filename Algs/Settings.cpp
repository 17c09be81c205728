#include "Algs/Algs.h"

#include "Shared/Util.h"

#include <sstream>

namespace VeltoTouch {
namespace {

constexpr std::string_view kEnableHoldSuppression = "EnableHoldSuppression";
constexpr std::string_view kEnableTapSuppression = "EnableTapSuppression";
constexpr std::string_view kResetEventStats = "ResetEventStats";
constexpr std::string_view kActivationThreshold = "ActivationThreshold";
constexpr std::string_view kVirtualNormalizationFactors = "VirtualNormalizationFactors";
constexpr std::string_view kHoldTimeoutMilliseconds = "HoldTimeoutMilliseconds";
constexpr std::string_view kEventStats = "EventStats";
constexpr std::string_view kDebugInfo = "DebugInfo";

const Number& numberIn(const Ref<Value>& value) {
    static const Ref<Number> zero = Number::withUnsignedInt(0);
    const auto* number = as<Number>(value);
    return number != nullptr ? *number : *zero;
}

} // namespace

void Algs::setState(const std::string& key, const Ref<Value>& value) {
    const Number& number = numberIn(value);
    if (key == kEnableHoldSuppression)
        handStats.enableHoldSuppression = number.boolValue();
    else if (key == kEnableTapSuppression)
        handStats.enableTapSuppression = number.boolValue();
    else if (key == kResetEventStats)
        eventStats.Reset();
    else if (key == kActivationThreshold)
        handStats.activationThreshold = number.floatValue();
    else if (const auto index = factorIndex(key))
        virtualImage.normalizationFactors[*index] = number.floatValue();
    else if (key == kHoldTimeoutMilliseconds)
        handStats.holdTimeoutMs = static_cast<std::uint32_t>(number.unsignedLongLongValue());
}

Ref<Value> Algs::getState(const std::string& key) const {
    if (key == kEnableHoldSuppression)
        return Number::withBool(handStats.enableHoldSuppression);
    if (key == kEnableTapSuppression)
        return Number::withBool(handStats.enableTapSuppression);
    if (key == kHoldTimeoutMilliseconds)
        return Number::withUnsignedInt(handStats.holdTimeoutMs);
    if (key == kActivationThreshold)
        return Number::withFloat(handStats.activationThreshold);
    if (const auto index = factorIndex(key))
        return Number::withFloat(virtualImage.normalizationFactors[*index]);
    if (key == kEventStats)
        return eventStats.statsDictionary();
    if (key == kDebugInfo) {
        std::vector<Dictionary::Entry> entries;
        entries.push_back({.key = std::string(kEventStats), .value = eventStats.statsDictionary()});
        return makeRef<Dictionary>(std::move(entries));
    }
    return nullptr;
}

Algs::SettingKind Algs::settingKind(const std::string& key) {
    if (key == kResetEventStats)
        return SettingKind::ReadsNothing;
    const bool readsNumber = key == kEnableHoldSuppression || key == kEnableTapSuppression ||
                             key == kActivationThreshold || key == kHoldTimeoutMilliseconds || factorIndex(key);
    return readsNumber ? SettingKind::ReadsNumber : SettingKind::Unknown;
}

// The factor that a key "VirtualNormalizationFactors.N" names, if there is one. N is read as a stream reads an
// unsigned number: what follows the number is ignored, what is no number is 0, a negative one wraps.
std::optional<std::size_t> Algs::factorIndex(const std::string& key) {
    std::string rest = key;
    if (!Util::stripDomainFromKey(rest, kVirtualNormalizationFactors))
        return std::nullopt;
    std::istringstream stream(rest);
    stream.imbue(std::locale::classic());
    unsigned long index = 0;
    if (!(stream >> index))
        index = 0;
    if (index >= kGroupCount)
        return std::nullopt;
    return index;
}

} // namespace VeltoTouch
