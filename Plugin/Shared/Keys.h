#pragma once

#include <optional>
#include <string_view>

// The keys of the service's properties but its settings (Plugin/Algs/Settings.h), and their domains. A domain and a dot
// stand before the keys of whoever answers them: the pipeline's among the service's, the recognizer's among the
// pipeline's. Recordings hold the pipeline's keys without its domain.

namespace VeltoTouch::Keys {

inline constexpr std::string_view kPipelineDomain = "Pipeline";
inline constexpr std::string_view kAlgsDomain = "Algs";

inline constexpr std::string_view kEventStats = "Pipeline.Algs.EventStats";
inline constexpr std::string_view kAlgsDebugInfo = "Pipeline.Algs.DebugInfo";
inline constexpr std::string_view kDebugInfo = "Pipeline.DebugInfo";
inline constexpr std::string_view kVersion = "Version";
inline constexpr std::string_view kRecording = "Recording";
inline constexpr std::string_view kFirmwareDebugReports = "FirmwareDebugReports";
inline constexpr std::string_view kFactoryResetHoldDuration = "FactoryResetHoldDuration";
inline constexpr std::string_view kServicePluginDebug = "ServicePluginDebug";

// What stands behind a domain and its dot; nothing where the key does not begin with both.
[[nodiscard]] constexpr std::optional<std::string_view> below(std::string_view domain, std::string_view key) noexcept {
    if (key.size() <= domain.size() || key[domain.size()] != '.' || !key.starts_with(domain))
        return std::nullopt;
    return key.substr(domain.size() + 1);
}

// The same for a key of the pipeline's, and for one of the recognizer's.
[[nodiscard]] constexpr std::optional<std::string_view> belowPipeline(std::string_view key) noexcept {
    return below(kPipelineDomain, key);
}
[[nodiscard]] constexpr std::optional<std::string_view> belowAlgs(std::string_view key) noexcept {
    const auto rest = belowPipeline(key);
    return rest ? below(kAlgsDomain, *rest) : std::nullopt;
}

} // namespace VeltoTouch::Keys
