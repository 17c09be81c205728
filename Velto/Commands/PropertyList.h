#pragma once

#include "Velto/Options/Keys.h"

#include <string>
#include <vector>

namespace VeltoTouch::Velto {

// A listed property and what was read under its key; nil where nothing was.
struct ReadProperty {
    ListedProperty property;
    Ref<Value> value;
};

// A line of JSON for each.
[[nodiscard]] std::string propertyLines(const std::vector<ReadProperty>& properties);
// Columns for people: a row for each, one for each member of a dictionary.
[[nodiscard]] std::string propertyTable(const std::vector<ReadProperty>& properties);

} // namespace VeltoTouch::Velto
