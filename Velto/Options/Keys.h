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
// The readable ones, and those of gestures: what velto get reads.
[[nodiscard]] std::vector<std::string> servedKeys();

// Lists at the end of the help.
[[nodiscard]] HelpList settingList();
[[nodiscard]] HelpList propertyList();

// Returns the keys, each followed by `end`; a factor's key without its number.
[[nodiscard]] Candidates keyCandidates(const std::vector<std::string>& keys, const std::string& end);

// A property and what is known of it without reading it.
struct ListedProperty {
    std::string key;
    std::string_view type;
    std::string_view range;
    std::string_view bounds; // the range as JSON
    Ref<Value> defaultValue; // nil for an action and for statistics
    bool isRead;             // there is a value
};
// Returns every setting, every key of a gesture, and of the other properties those that are small and do not ask the
// device.
[[nodiscard]] std::vector<ListedProperty> listedProperties();
[[nodiscard]] std::vector<std::string> unlistedKeys();

} // namespace VeltoTouch::Velto
