#include "Platform/JSONParser.h"

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace VeltoTouch::JSON {

namespace dom = simdjson::dom;

static_assert(Data::kPadding >= simdjson::SIMDJSON_PADDING, "the parser reads this far beyond the text");

ParsedText::ParsedText(const Data& text) {
    simdjson::error_code error = parse(text);
    if (error == simdjson::SUCCESS)
        return;
    Examination examination = examine(text.bytes()); // needs no tree
    fault = examination.fault;
    if (fault)
        return;
    if (error != simdjson::MEMALLOC)
        error = parse(*makeRef<Data>(std::move(examination.readableText)));
    if (error == simdjson::MEMALLOC)
        throw std::bad_alloc();
}

ParsedText::~ParsedText() = default;

simdjson::error_code ParsedText::parse(const Data& text) {
    const std::string_view bytes = text.bytes();
    const simdjson::error_code error = parser.parse(bytes.data(), bytes.size(), false).get(root);
    if (error == simdjson::CAPACITY)
        throw std::runtime_error("4 GiB or larger");
    isValid = error == simdjson::SUCCESS;
    return error;
}

Ref<Value> valueOf(dom::element element) {
    switch (element.type()) {
    case dom::element_type::ARRAY: {
        std::vector<Ref<Value>> elements;
        for (const dom::element item : dom::array(element))
            elements.push_back(valueOf(item));
        return makeRef<Array>(std::move(elements));
    }
    case dom::element_type::OBJECT: {
        std::vector<Dictionary::Entry> entries;
        for (const dom::key_value_pair member : dom::object(element))
            entries.push_back({.key = std::string(member.key), .value = valueOf(member.value)});
        return makeRef<Dictionary>(std::move(entries));
    }
    case dom::element_type::INT64:
        return Number::withLongLong(std::int64_t(element));
    case dom::element_type::UINT64:
        return Number::withUnsignedLong(std::uint64_t(element));
    case dom::element_type::DOUBLE:
        return Number::withDouble(double(element));
    case dom::element_type::STRING:
        return makeRef<String>(std::string(std::string_view(element)));
    case dom::element_type::BOOL:
        return Number::withBool(bool(element));
    case dom::element_type::NULL_VALUE:
        return makeRef<Null>();
    }
    return nullptr;
}

} // namespace VeltoTouch::JSON
