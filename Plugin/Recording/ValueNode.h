#pragma once

#include "Platform/Value.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace VeltoTouch::Container {

// A value tree with the operations of a JSON::Element, so that one reader serves both.
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

    // The elements of an array; none if it is no array.
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

} // namespace VeltoTouch::Container
