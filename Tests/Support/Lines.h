#pragma once

#include "Platform/JSON.h"

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

// The lines that the program writes with --jsonl.

namespace VeltoTouch::Tests {

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// The members with this key, as JSON, of every line that has one.
inline std::vector<std::string> membersOf(const std::string& lines, std::string_view key) {
    std::vector<std::string> members;
    for (const std::string& line : linesOf(lines)) {
        const Ref<Value> object = JSON::parse(line);
        const auto* dictionary = as<Dictionary>(object);
        if (const Value* member = dictionary != nullptr ? dictionary->find(key) : nullptr)
            members.push_back(JSON::text(member));
    }
    return members;
}

} // namespace VeltoTouch::Tests
