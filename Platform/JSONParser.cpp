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
    if (parse(text))
        return;
    Examination examination = examine(text.bytes());
    fault = examination.fault;
    if (!examination.fault)
        parse(*makeRef<Data>(std::move(examination.readableText)));
}

ParsedText::~ParsedText() = default;

bool ParsedText::parse(const Data& text) {
    const std::string_view bytes = text.bytes();
    const auto result = parser.parse(bytes.data(), bytes.size(), false).get(root);
    if (result == simdjson::MEMALLOC)
        throw std::bad_alloc();
    if (result == simdjson::CAPACITY)
        throw std::runtime_error("4 GiB or larger");
    return isValid = result == simdjson::SUCCESS;
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
