#pragma once

#include <string>
#include <string_view>

namespace VeltoTouch::Page {

// Returns an HTML file that shows `json`, an object whose member "kind" says what it is (Assets/main.js). The file asks
// the network for nothing, and nothing in the data is markup or a script.
[[nodiscard]] std::string document(std::string_view json);

// Its text around the data, made at build time of Assets/ (cmake/Page.cmake).
extern const std::string_view kDocumentBegin;
extern const std::string_view kDocumentEnd;

} // namespace VeltoTouch::Page
