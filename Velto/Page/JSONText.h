#pragma once

#include "Platform/JSON.h"

#include <string>

namespace VeltoTouch::Page {

using JSON::quoted;

// An array of what `textOf` returns for each item; nothing for an empty text.
template <class Items, class TextOf>
[[nodiscard]] std::string arrayOf(Items&& items, const TextOf& textOf) {
    std::string json = "[";
    for (auto&& item : items) {
        const std::string text = textOf(item);
        if (text.empty())
            continue;
        json += json.size() > 1 ? "," : "";
        json += text;
    }
    return json + "]";
}

} // namespace VeltoTouch::Page
