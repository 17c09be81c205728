#pragma once

#include "Platform/JSONExaminer.h"
#include "Platform/Value.h"

#include <optional>

#include <simdjson.h>

// The JSON parser, for the few files that read its tree. Everybody else reads values (JSON.h).

namespace VeltoTouch::JSON {

// A text, parsed whole. The tree is the parser's own and goes with it.
struct ParsedText {
    // Throws std::bad_alloc if there is no memory for the tree of a text without a fault, std::runtime_error if the
    // text is 4 GiB or larger, which the parser cannot address.
    explicit ParsedText(const Data& text);
    ParsedText(const ParsedText&) = delete;
    ParsedText& operator=(const ParsedText&) = delete;
    ~ParsedText();

    simdjson::dom::parser parser;
    simdjson::dom::element root; // read only if isValid
    bool isValid = false;
    std::optional<Fault> fault; // the first one of a text that is no JSON

private:
    simdjson::error_code parse(const Data& text);
};

// The value that an element stands for.
[[nodiscard]] Ref<Value> valueOf(simdjson::dom::element element);

} // namespace VeltoTouch::JSON
