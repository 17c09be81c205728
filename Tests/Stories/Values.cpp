#include "Tests/Stories/Values.h"

#include <bit>
#include <cmath>

namespace VeltoTouch::Tests {
namespace {

bool areSameReals(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool areSameNumbers(const Number& ours, const nlohmann::json& theirs) {
    if (ours.isBool() || theirs.is_boolean())
        return ours.isBool() && theirs.is_boolean() && ours.boolValue() == theirs.get<bool>();
    if (theirs.is_number_float())
        return areSameReals(ours.doubleValue(), theirs.get<double>());
    const bool isNegative = !theirs.is_number_unsigned() && theirs.get<std::int64_t>() < 0;
    return ours.unsignedLongLongValue() == theirs.get<std::uint64_t>() && (ours.doubleValue() < 0) == isNegative;
}

bool areSameElements(const Array& ours, const nlohmann::json& theirs) {
    if (ours.elements().size() != theirs.size())
        return false;
    for (std::size_t i = 0; i < theirs.size(); ++i) {
        if (!areSame(ours.elements()[i].get(), theirs[i]))
            return false;
    }
    return true;
}

bool areSameMembers(const Dictionary& ours, const nlohmann::json& theirs) {
    if (ours.entries().size() != theirs.size())
        return false;
    for (const auto& entry : ours.entries()) {
        if (!theirs.contains(entry.key) || !areSame(entry.value.get(), theirs[entry.key]))
            return false;
    }
    return true;
}

} // namespace

Ref<Value> valueOf(const Reference::Value& value) {
    if (!value)
        return nullptr;
    switch (value->type()) {
    case nlohmann::json::value_t::boolean:
        return Number::withBool(value->get<bool>());
    case nlohmann::json::value_t::number_integer:
        return Number::withLongLong(value->get<std::int64_t>());
    case nlohmann::json::value_t::number_unsigned:
        return Number::withUnsignedLong(value->get<std::uint64_t>());
    case nlohmann::json::value_t::number_float:
        return Number::withDouble(value->get<double>());
    case nlohmann::json::value_t::string:
        return makeRef<String>(value->get<std::string>());
    case nlohmann::json::value_t::binary:
        return makeRef<Data>(std::string(value->get_binary().begin(), value->get_binary().end()));
    case nlohmann::json::value_t::array: {
        std::vector<Ref<Value>> elements;
        for (const nlohmann::json& element : *value)
            elements.push_back(valueOf(element));
        return makeRef<Array>(std::move(elements));
    }
    case nlohmann::json::value_t::object: {
        std::vector<Dictionary::Entry> entries;
        for (const auto& [key, member] : value->items())
            entries.push_back({.key = key, .value = valueOf(member)});
        return makeRef<Dictionary>(std::move(entries));
    }
    default:
        return makeRef<Null>();
    }
}

bool areSame(const Value* ours, const Reference::Value& theirs) {
    if (ours == nullptr || !theirs)
        return ours == nullptr && !theirs;
    if (const auto* number = as<Number>(ours))
        return (theirs->is_number() || theirs->is_boolean()) && areSameNumbers(*number, *theirs);
    if (const auto* text = as<String>(ours))
        return theirs->is_string() && text->text() == theirs->get<std::string>();
    if (const auto* array = as<Array>(ours))
        return theirs->is_array() && areSameElements(*array, *theirs);
    if (const auto* dictionary = as<Dictionary>(ours))
        return theirs->is_object() && areSameMembers(*dictionary, *theirs);
    if (const auto* data = as<Data>(ours))
        return theirs->is_binary() &&
               data->bytes() == std::string(theirs->get_binary().begin(), theirs->get_binary().end());
    return theirs->is_null();
}

} // namespace VeltoTouch::Tests
