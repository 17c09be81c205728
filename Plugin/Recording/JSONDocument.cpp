#include "Plugin/Recording/JSONDocument.h"

#include "Platform/JSONParser.h"

#include <bit>

namespace VeltoTouch::JSON {
namespace {

namespace dom = simdjson::dom;

// The parser's element, object iterator and array iterator are each a document and a position in it;
// our elements keep those two and become the parser's own again here.
struct Place {
    const void* document;
    std::size_t position;
};

template <class T>
T fromPlace(const void* document, std::size_t position) noexcept {
    return std::bit_cast<T>(Place{.document = document, .position = position});
}

template <class T>
Place toPlace(const T& handle) noexcept {
    return std::bit_cast<Place>(handle);
}

} // namespace

Document::Document(const Data& text) : _parsed(std::make_unique<ParsedText>(text)) {}

Document::~Document() = default;

const std::optional<Fault>& Document::fault() const noexcept { return _parsed->fault; }

Element Document::root() const noexcept {
    if (!_parsed->isValid)
        return {};
    const Place place = toPlace(_parsed->root);
    return {place.document, place.position};
}

bool Element::isDictionary() const noexcept {
    return isPresent() && fromPlace<dom::element>(_document, _position).is_object();
}

bool Element::isArray() const noexcept {
    return isPresent() && fromPlace<dom::element>(_document, _position).is_array();
}

std::optional<std::string_view> Element::string() const noexcept {
    std::string_view text;
    if (!isPresent() || fromPlace<dom::element>(_document, _position).get(text) != simdjson::SUCCESS)
        return std::nullopt;
    return text;
}

std::optional<std::uint64_t> Element::unsignedNumber() const noexcept {
    if (!isPresent())
        return std::nullopt;
    const auto element = fromPlace<dom::element>(_document, _position);
    switch (element.type()) {
    case dom::element_type::INT64:
        return static_cast<std::uint64_t>(element.get_int64().value_unsafe());
    case dom::element_type::UINT64:
        return element.get_uint64().value_unsafe();
    case dom::element_type::DOUBLE:
        return unsignedReading(element.get_double().value_unsafe());
    default:
        return std::nullopt;
    }
}

Ref<Value> Element::value() const {
    return isPresent() ? valueOf(fromPlace<dom::element>(_document, _position)) : nullptr;
}

void Element::findMembers(const std::string_view* names, Element* found, std::size_t count) const noexcept {
    dom::object object;
    if (!isPresent() || fromPlace<dom::element>(_document, _position).get(object) != simdjson::SUCCESS)
        return;
    for (auto member = object.begin(); member != object.end(); ++member) {
        const std::string_view key = member.key();
        for (std::size_t i = 0; i < count; ++i) {
            if (names[i] != key)
                continue;
            const Place place = toPlace(member.value());
            found[i] = Element(place.document, place.position);
            break;
        }
    }
}

Element::Elements Element::elements() const noexcept {
    dom::array array;
    if (!isPresent() || fromPlace<dom::element>(_document, _position).get(array) != simdjson::SUCCESS)
        return {Element(), Element()};
    const Place first = toPlace(array.begin());
    const Place last = toPlace(array.end());
    return {Element(first.document, first.position), Element(last.document, last.position)};
}

Element::Elements::Iterator& Element::Elements::Iterator::operator++() noexcept {
    auto iterator = fromPlace<dom::array::iterator>(_element._document, _element._position);
    const Place next = toPlace(++iterator);
    _element = Element(next.document, next.position);
    return *this;
}

} // namespace VeltoTouch::JSON
