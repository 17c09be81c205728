#include "Velto/Page/Document.h"

#include <algorithm>

namespace VeltoTouch::Page {

// Within JSON a "<" stands in strings alone.
std::string document(std::string_view json) {
    std::string text(kDocumentBegin);
    text.reserve(kDocumentBegin.size() + json.size() + kDocumentEnd.size());
    while (!json.empty()) {
        const std::size_t length = std::min(json.find('<'), json.size());
        text += json.substr(0, length);
        text += length < json.size() ? "\\u003c" : "";
        json.remove_prefix(std::min(length + 1, json.size()));
    }
    text += kDocumentEnd;
    return text;
}

} // namespace VeltoTouch::Page
