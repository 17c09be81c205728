#include "Platform/Value.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace VeltoTouch {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

std::int64_t signedReading(double number) noexcept {
    if (std::isnan(number))
        return 0;
    if (number >= kTwoTo63)
        return std::numeric_limits<std::int64_t>::max();
    if (number < -kTwoTo63)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

bool isFloating(const Number::Content& content) noexcept {
    return std::holds_alternative<float>(content) || std::holds_alternative<double>(content);
}

bool isNegativeInteger(const Number::Content& content) noexcept {
    const auto* number = std::get_if<std::int64_t>(&content);
    return number != nullptr && *number < 0;
}

template <class Items, class DepthOf>
std::size_t deepest(const Items& items, DepthOf depthOf) {
    std::size_t depth = 0;
    for (const auto& item : items)
        depth = std::max(depth, depthOf(item));
    return depth;
}

} // namespace

std::uint64_t unsignedReading(double number) noexcept {
    if (number >= kTwoTo64)
        return std::numeric_limits<std::uint64_t>::max();
    if (number >= 0.0)
        return static_cast<std::uint64_t>(number);
    return static_cast<std::uint64_t>(signedReading(number));
}

bool Number::boolValue() const noexcept {
    return std::visit([](auto number) { return number != decltype(number){}; }, _content);
}

float Number::floatValue() const noexcept {
    return std::visit([](auto number) { return static_cast<float>(number); }, _content);
}

double Number::doubleValue() const noexcept {
    return std::visit([](auto number) { return static_cast<double>(number); }, _content);
}

std::int64_t Number::longLongValue() const noexcept {
    if (isFloating(_content))
        return signedReading(doubleValue());
    return static_cast<std::int64_t>(unsignedLongLongValue());
}

std::uint64_t Number::unsignedLongLongValue() const noexcept {
    if (isFloating(_content))
        return unsignedReading(doubleValue());
    return std::visit([](auto number) { return static_cast<std::uint64_t>(number); }, _content);
}

bool Number::hasEqualContent(const Number& other) const noexcept {
    if (isFloating(_content) || isFloating(other._content))
        return doubleValue() == other.doubleValue();
    return isNegativeInteger(_content) == isNegativeInteger(other._content) &&
           unsignedLongLongValue() == other.unsignedLongLongValue();
}

std::size_t Value::checkedDepth(std::size_t depth) {
    if (depth > kDeepest)
        throw std::length_error("value too deep");
    return depth;
}

Array::Array(std::vector<Ref<Value>> elements)
    : Value(kKind, 1 + deepest(elements, [](const Ref<Value>& element) { return element->depth(); })),
      _elements(std::move(elements)) {}

Dictionary::Dictionary(std::vector<Entry> entries)
    : Value(kKind, 1 + deepest(entries, [](const Entry& entry) { return entry.value->depth(); })),
      _entries(std::move(entries)) {
    const auto byKey = [](const Entry& a, const Entry& b) { return a.key < b.key; };
    if (!std::is_sorted(_entries.begin(), _entries.end(), byKey))
        std::stable_sort(_entries.begin(), _entries.end(), byKey);
    const auto sameKey = [](const Entry& a, const Entry& b) { return a.key == b.key; };
    // Walking backwards keeps the last of equal keys, which then stands at the end of the vector.
    const auto kept = std::unique(_entries.rbegin(), _entries.rend(), sameKey);
    _entries.erase(_entries.begin(), kept.base());
}

const Dictionary::Entry* Dictionary::entryUnder(std::string_view key) const noexcept {
    const auto entry = std::lower_bound(_entries.begin(), _entries.end(), key,
                                        [](const Entry& a, std::string_view wanted) { return a.key < wanted; });
    return entry != _entries.end() && entry->key == key ? &*entry : nullptr;
}

const Value* Dictionary::find(std::string_view key) const noexcept {
    const Entry* const entry = entryUnder(key);
    return entry == nullptr ? nullptr : entry->value.get();
}

Ref<Value> Dictionary::value(std::string_view key) const noexcept {
    const Entry* const entry = entryUnder(key);
    return entry == nullptr ? nullptr : entry->value;
}

Data::Data(std::string bytes) : Value(kKind), _bytes(std::move(bytes)) { _bytes.reserve(_bytes.size() + kPadding); }

bool Value::isEqual(const Object& other) const noexcept {
    const auto* value = dynamic_cast<const Value*>(&other);
    if (value == nullptr || value->kind() != kind())
        return false;
    switch (kind()) {
    case Kind::Null:
        return true;
    case Kind::Number:
        return as<Number>(this)->hasEqualContent(*as<Number>(value));
    case Kind::String:
        return as<String>(this)->text() == as<String>(value)->text();
    case Kind::Array:
        return std::ranges::equal(as<Array>(this)->elements(), as<Array>(value)->elements(),
                                  [](const auto& a, const auto& b) { return CFEqual(a.get(), b.get()); });
    case Kind::Dictionary:
        return std::ranges::equal(
            as<Dictionary>(this)->entries(), as<Dictionary>(value)->entries(),
            [](const auto& a, const auto& b) { return a.key == b.key && CFEqual(a.value.get(), b.value.get()); });
    case Kind::Data:
        return as<Data>(this)->bytes() == as<Data>(value)->bytes();
    }
    return false;
}

} // namespace VeltoTouch
