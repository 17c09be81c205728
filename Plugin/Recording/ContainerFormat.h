#pragma once

#include "Platform/JSON.h"
#include "Plugin/Recording/Damage.h"

#include <array>
#include <cstdint>
#include <optional>
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

// A value tree that answers the same questions as a JSON::Element, so that one reader serves both.
class ValueNode {
public:
    ValueNode() noexcept = default;
    explicit ValueNode(const Value* value) noexcept : _value(value) {}

    [[nodiscard]] bool isPresent() const noexcept { return _value != nullptr; }
    [[nodiscard]] bool isDictionary() const noexcept { return as<Dictionary>(_value) != nullptr; }
    [[nodiscard]] bool isArray() const noexcept { return as<Array>(_value) != nullptr; }
    [[nodiscard]] std::optional<std::string_view> string() const noexcept {
        const auto* string = as<String>(_value);
        return string != nullptr ? std::optional<std::string_view>(string->text()) : std::nullopt;
    }
    [[nodiscard]] std::optional<std::uint64_t> unsignedNumber() const noexcept {
        const auto* number = as<Number>(_value);
        return number != nullptr && !number->isBool() ? std::optional(number->unsignedLongLongValue()) : std::nullopt;
    }
    [[nodiscard]] Ref<Value> value() const noexcept { return Ref<Value>::retained(const_cast<Value*>(_value)); }

    template <std::size_t Count>
    [[nodiscard]] std::array<ValueNode, Count> members(const std::array<std::string_view, Count>& names) const {
        std::array<ValueNode, Count> found;
        if (const auto* dictionary = as<Dictionary>(_value)) {
            for (std::size_t i = 0; i < Count; ++i)
                found[i] = ValueNode(dictionary->find(names[i]));
        }
        return found;
    }

    // The elements of an array; none where it is no array.
    [[nodiscard]] std::vector<ValueNode> elements() const {
        std::vector<ValueNode> nodes;
        if (const auto* array = as<Array>(_value)) {
            for (const Ref<Value>& element : array->elements())
                nodes.emplace_back(element.get());
        }
        return nodes;
    }

private:
    const Value* _value = nullptr;
};

// The version of a container. Throws where there is none.
template <class Node>
[[nodiscard]] std::uint64_t versionOf(const Node& container) {
    if (!container.isDictionary())
        throw std::invalid_argument("invalid container");
    const auto [version] = container.members(std::array{kVersion});
    if (const auto number = version.unsignedNumber())
        return *number;
    throw std::invalid_argument("invalid version");
}

// Handles each element of the list called `name`. The elements must be objects, in every version; an exception gets the
// number of the element as its place.
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
