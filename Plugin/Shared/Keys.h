#pragma once

#include <optional>
#include <string>
#include <string_view>

// The keys of the service's properties, but for its settings (Plugin/Algs/Settings.h), and their domains. A domain and
// the dot behind it say who answers a key: "Pipeline." the pipeline, and "Algs." behind that the recognizer. Recordings
// hold the pipeline's keys without its domain.

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

// Returns what stands behind a domain and its dot; nothing if the key does not begin with both.
[[nodiscard]] constexpr std::optional<std::string_view> below(std::string_view domain, std::string_view key) noexcept {
    if (key.size() <= domain.size() || key[domain.size()] != '.' || !key.starts_with(domain))
        return std::nullopt;
    return key.substr(domain.size() + 1);
}

// The same for the full key of a property of the pipeline, and of the recognizer.
[[nodiscard]] constexpr std::optional<std::string_view> belowPipeline(std::string_view key) noexcept {
    return below(kPipelineDomain, key);
}
[[nodiscard]] constexpr std::optional<std::string_view> belowAlgs(std::string_view key) noexcept {
    const auto rest = belowPipeline(key);
    return rest ? below(kAlgsDomain, *rest) : std::nullopt;
}

// The other way round: return the full key for a key of the pipeline, and for one of the recognizer.
[[nodiscard]] inline std::string pipelineKey(std::string_view key) {
    return std::string(kPipelineDomain).append(".").append(key);
}
[[nodiscard]] inline std::string algsKey(std::string_view key) {
    return pipelineKey(kAlgsDomain).append(".").append(key);
}

} // namespace VeltoTouch::Keys
