#pragma once

#include "Velto/Options/Keys.h"

#include <string>
#include <vector>

namespace VeltoTouch::Velto {

// A listed property and the value under its key; nil if there is none.
struct ReadProperty {
    ListedProperty property;
    Ref<Value> value;
    std::string source; // of a setting's value; empty for what is none
};

// ,"source":"..."; empty for an empty one.
[[nodiscard]] std::string sourceMember(const std::string& source);

// One line of JSON per property.
[[nodiscard]] std::string propertyLines(const std::vector<ReadProperty>& properties);
// Columns for people: one row per property, one per member of a dictionary.
[[nodiscard]] std::string propertyTable(const std::vector<ReadProperty>& properties);

} // namespace VeltoTouch::Velto
