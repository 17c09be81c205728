#pragma once

#include "Platform/Value.h"
#include "Velto/Options/App.h"

#include <string>
#include <string_view>
#include <vector>

// The keys of the service's properties, for help, completion, lists and suggestions. The key of a factor has N in place
// of its number, but in a list of properties.

namespace VeltoTouch::Velto {

[[nodiscard]] std::vector<std::string> writableKeys();
[[nodiscard]] std::vector<std::string> readableKeys();

// A value as people write it: compact JSON, but what is a float has no more digits than a float needs.
[[nodiscard]] std::string shortText(const Value* value);

// Lists at the end of the help.
[[nodiscard]] HelpList settingList();
[[nodiscard]] HelpList propertyList();

// Keys with `end` behind them; of a factor's key what stands before its number.
[[nodiscard]] Candidates keyCandidates(const std::vector<std::string>& keys, const std::string& end);

// A property with what is known of it beforehand.
struct ListedProperty {
    std::string key;
    std::string_view type;
    std::string_view range;
    std::string_view bounds; // the range as JSON
    Ref<Value> defaultValue; // nil for what is no setting, and for an action
    bool isRead;             // there is a value
};
// Each setting, and what is small of the rest and costs the device nothing.
[[nodiscard]] std::vector<ListedProperty> listedProperties();
[[nodiscard]] std::vector<std::string> unlistedKeys();

} // namespace VeltoTouch::Velto
