#include "Platform/JSON.h"

#include "Platform/JSONExaminer.h"
#include "Platform/UTF8.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <new>
#include <stdexcept>

#include <simdjson.h>

namespace VeltoTouch::JSON {
namespace {

namespace dom = simdjson::dom;

static_assert(Data::kPadding >= simdjson::SIMDJSON_PADDING, "the parser reads this far beyond the text");

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

Ref<Value> makeValue(dom::element element) {
    switch (element.type()) {
    case dom::element_type::ARRAY: {
        std::vector<Ref<Value>> elements;
        for (const dom::element item : dom::array(element))
            elements.push_back(makeValue(item));
        return makeRef<Array>(std::move(elements));
    }
    case dom::element_type::OBJECT: {
        std::vector<Dictionary::Entry> entries;
        for (const dom::key_value_pair member : dom::object(element))
            entries.push_back({.key = std::string(member.key), .value = makeValue(member.value)});
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

void appendControl(std::string& text, char control) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    switch (control) {
    case '\b':
        text += "\\b";
        return;
    case '\f':
        text += "\\f";
        return;
    case '\n':
        text += "\\n";
        return;
    case '\r':
        text += "\\r";
        return;
    case '\t':
        text += "\\t";
        return;
    default:
        text += "\\u00";
        text += kDigits[static_cast<unsigned char>(control) >> 4U];
        text += kDigits[static_cast<unsigned char>(control) & 0xFU];
    }
}

// Writes values, compact or indented by two blanks a level.
class Writer {
public:
    Writer(std::string& text, bool indented) noexcept : _text(text), _indented(indented) {}

    void write(const Value* value) {
        if (value == nullptr)
            _text += "null";
        else
            writePresent(*value);
    }

private:
    void writePresent(const Value& value) {
        switch (value.kind()) {
        case Value::Kind::Null:
            _text += "null";
            break;
        case Value::Kind::Number:
            std::visit([this](auto number) { writeNumber(number); }, as<Number>(&value)->content());
            break;
        case Value::Kind::String:
            appendString(_text, as<String>(&value)->text());
            break;
        case Value::Kind::Array:
            writeEach('[', ']', as<Array>(&value)->elements(), [this](const Ref<Value>& item) { write(item.get()); });
            break;
        case Value::Kind::Dictionary:
            writeEach('{', '}', as<Dictionary>(&value)->entries(), [this](const Dictionary::Entry& entry) {
                appendString(_text, entry.key);
                _text += _indented ? ": " : ":";
                write(entry.value.get());
            });
            break;
        case Value::Kind::Data:
            writeUnrepresentable("data");
            break;
        }
    }

    template <class Range, class WriteItem>
    void writeEach(char opening, char closing, const Range& items, WriteItem writeItem) {
        _text += opening;
        ++_level;
        bool isFirst = true;
        for (const auto& item : items) {
            if (!isFirst)
                _text += ',';
            isFirst = false;
            breakLine();
            writeItem(item);
        }
        --_level;
        if (!isFirst)
            breakLine();
        _text += closing;
    }

    void breakLine() {
        if (_indented)
            _text.append(1, '\n').append(2 * _level, ' ');
    }

    void writeNumber(bool number) { _text += number ? "true" : "false"; }
    void writeNumber(float number) { writeNumber(static_cast<double>(number)); }

    void writeNumber(double number) {
        if (std::isnan(number))
            return writeUnrepresentable("nan");
        if (std::isinf(number))
            return writeUnrepresentable(number < 0 ? "-infinity" : "infinity");
        const std::string_view digits = appendDigits(number);
        if (digits.find_first_of(".e") == std::string_view::npos)
            _text += ".0";
    }

    template <class Integer>
    void writeNumber(Integer number) {
        appendDigits(number);
    }

    template <class T>
    std::string_view appendDigits(T number) {
        std::array<char, 32> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        const auto start = _text.size();
        _text.append(digits.data(), end);
        return std::string_view(_text).substr(start);
    }

    void writeUnrepresentable(std::string_view kind) {
        _text.append(R"({"Unrepresentable":")").append(kind).append("\"}");
    }

    std::string& _text;
    const bool _indented;
    std::size_t _level = 0;
};

} // namespace

struct Document::Parsed {
    // False for what the parser refuses.
    bool parse(const Data& text) {
        const std::string_view bytes = text.bytes();
        const auto result = parser.parse(bytes.data(), bytes.size(), false).get(root);
        if (result == simdjson::MEMALLOC)
            throw std::bad_alloc();
        if (result == simdjson::CAPACITY)
            throw std::runtime_error("4 GiB or larger");
        return isValid = result == simdjson::SUCCESS;
    }

    dom::parser parser;
    dom::element root;
    bool isValid = false;
    std::optional<Fault> fault;
};

Document::Document(const Data& text) : _parsed(std::make_unique<Parsed>()) {
    if (_parsed->parse(text))
        return;
    Examination examination = examine(text.bytes());
    _parsed->fault = examination.fault;
    if (!examination.fault)
        _parsed->parse(*makeRef<Data>(std::move(examination.readableText)));
}

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
    return isPresent() ? makeValue(fromPlace<dom::element>(_document, _position)) : nullptr;
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

Ref<Value> parse(std::string_view text) {
    const Document document(*makeRef<Data>(std::string(text)));
    return document.root().value();
}

void append(std::string& text, const Value* value) { Writer(text, false).write(value); }

void appendString(std::string& text, std::string_view string) {
    static constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
    text += '"';
    while (!string.empty()) {
        const std::size_t length = UTF8::sequenceLength(string);
        const char first = string.front();
        if (length == 0)
            text += kReplacement;
        else if (length > 1)
            text += string.substr(0, length);
        else if (first == '"' || first == '\\')
            text.append(1, '\\').append(1, first);
        else if (static_cast<unsigned char>(first) < 0x20)
            appendControl(text, first);
        else
            text += first;
        string.remove_prefix(length == 0 ? 1 : length);
    }
    text += '"';
}

std::string text(const Value* value) {
    std::string result;
    append(result, value);
    return result;
}

std::string description(const Value* value) {
    if (value == nullptr)
        return "(null)";
    std::string result;
    Writer(result, true).write(value);
    return result;
}

} // namespace VeltoTouch::JSON
