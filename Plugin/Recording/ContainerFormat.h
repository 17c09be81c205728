#pragma once

#include "Plugin/Recording/Damage.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

// The names of the recording container, and what reader and migration share.
//
//   version 2   {"Version": 2, "Frames": [FRAME...]}
//               FRAME: {"Type": "InputReport", "Timestamp": ns, "Data": "01 f2 ... "}
//                      {"Type": "State" or "Metadata", "Timestamp": ns, "Key": "...", "Value": any, absent for nil}
//   version 1   the same, but a report's text stands under "Report"
//   version 0   {"Version": 0, "Reports": [{"Timestamp": ns, "ReportData": "01 f2 ... "}...]}

namespace VeltoTouch::Container {

constexpr std::uint64_t kCurrentVersion = 2;

constexpr std::string_view kVersion = "Version";
constexpr std::string_view kFrames = "Frames";
constexpr std::string_view kReports = "Reports"; // version 0
constexpr std::string_view kType = "Type";
constexpr std::string_view kTimestamp = "Timestamp";
constexpr std::string_view kKey = "Key";
constexpr std::string_view kValue = "Value";
constexpr std::string_view kData = "Data";

constexpr std::string_view kStateType = "State";
constexpr std::string_view kInputReportType = "InputReport";
constexpr std::string_view kMetadataType = "Metadata";

// Returns the version of a container. Throws std::invalid_argument if it has none.
template <class Node>
[[nodiscard]] std::uint64_t versionOf(const Node& container) {
    if (!container.isDictionary())
        throw std::invalid_argument("invalid container");
    const auto [version] = container.members(std::array{kVersion});
    if (const auto number = version.unsignedNumber())
        return *number;
    throw std::invalid_argument("invalid version");
}

// Calls `handle` for each element of the list called `name`. The elements must be objects, in every version. Adds the
// number of the element, as the place, to a std::invalid_argument.
template <class Nodes, class Handle>
void forEachFrame(std::string_view name, const Nodes& nodes, Handle handle) {
    std::size_t number = 0;
    for (const auto& node : nodes) {
        try {
            if (!node.isDictionary())
                throw std::invalid_argument("invalid frame");
            handle(node);
        } catch (const std::invalid_argument& error) {
            throw PlacedError<std::invalid_argument>(error.what(), fmt::format("{}[{}]", name, number));
        }
        ++number;
    }
}

} // namespace VeltoTouch::Container
