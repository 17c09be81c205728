#pragma once

#include "Platform/Value.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// JSON text to values and back.
//
// Reading: text is UTF-8, checked; nesting is bounded (1024 levels, what stands in the innermost included); integers
// are exact from -2^63 to 2^64 - 1, larger ones are read as the nearest double, and a number beyond all doubles makes
// the text no JSON. Of equal keys in an object the last counts.
// Writing: compact, keys in byte order, doubles in their shortest form that reads back equal (always with
// a point or an exponent, so that they stay doubles).

namespace VeltoTouch::JSON {

class Element;

// Where a text stops being JSON, and why.
struct Fault {
    std::size_t byte;  // its offset; the size of a text that ends too early
    const char* cause; // "expected a value"
};

// Parsed text, kept in the parser's own compact form. Elements are views into it and must not outlive it.
// Large recordings are read through it without making a value of every frame.
class Document {
public:
    // Parses `text` whole. Throws std::bad_alloc when there is no memory for it and
    // std::runtime_error when it is 4 GiB or larger, which the parser cannot address.
    explicit Document(const Data& text);
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document();

    // The top-level element; an absent one when the text is no JSON.
    [[nodiscard]] Element root() const noexcept;
    // The first fault of a text that is no JSON.
    [[nodiscard]] const std::optional<Fault>& fault() const noexcept;

private:
    struct Parsed;
    std::unique_ptr<Parsed> _parsed;
};

// One element of a document, or an absent one (a member that an object does not have). An absent element
// answers every question with no.
class Element {
public:
    class Elements;

    Element() noexcept = default;

    [[nodiscard]] bool isPresent() const noexcept { return _document != nullptr; }
    [[nodiscard]] bool isDictionary() const noexcept;
    [[nodiscard]] bool isArray() const noexcept;
    // The text of a string, owned by the document.
    [[nodiscard]] std::optional<std::string_view> string() const noexcept;
    // The unsigned 64-bit reading of a number; a boolean is no number.
    [[nodiscard]] std::optional<std::uint64_t> unsignedNumber() const noexcept;
    // A value tree of the element's own; nil for an absent one.
    [[nodiscard]] Ref<Value> value() const;

    // The members with these names, in the order of the names, found in one pass over the object. A member
    // that is not there, and every member of an element that is no object, is absent.
    template <std::size_t Count>
    [[nodiscard]] std::array<Element, Count> members(const std::array<std::string_view, Count>& names) const noexcept {
        std::array<Element, Count> found;
        findMembers(names.data(), found.data(), Count);
        return found;
    }

    // The elements of an array in order; none where it is no array.
    [[nodiscard]] Elements elements() const noexcept;

private:
    friend class Document;
    Element(const void* document, std::size_t position) noexcept : _document(document), _position(position) {}
    void findMembers(const std::string_view* names, Element* found, std::size_t count) const noexcept;

    const void* _document = nullptr;
    std::size_t _position = 0;
};

// A range over the elements of an array.
class Element::Elements {
public:
    class Iterator {
    public:
        [[nodiscard]] Element operator*() const noexcept { return _element; }
        Iterator& operator++() noexcept;
        [[nodiscard]] bool operator==(const Iterator& other) const noexcept {
            return _element._position == other._element._position;
        }

    private:
        friend class Elements;
        explicit Iterator(Element element) noexcept : _element(element) {}
        Element _element;
    };

    Elements(Element first, Element last) noexcept : _first(first), _last(last) {}
    [[nodiscard]] Iterator begin() const noexcept { return Iterator(_first); }
    [[nodiscard]] Iterator end() const noexcept { return Iterator(_last); }

private:
    Element _first;
    Element _last;
};

// The value that `text` stands for; nil when it is no JSON.
[[nodiscard]] Ref<Value> parse(std::string_view text);

// Appends the compact text of `value`; nil is written as null. A value that has no JSON form (data, infinities,
// NaN) becomes {"Unrepresentable":"<kind>"}, kind being data, infinity, -infinity or nan.
void append(std::string& text, const Value* value);

// Appends `string` quoted and escaped. Each byte that belongs to no well-formed UTF-8 sequence becomes U+FFFD.
void appendString(std::string& text, std::string_view string);

// The compact text of `value`.
[[nodiscard]] std::string text(const Value* value);

// A readable form of `value` for logs and people: indented JSON; nil is (null).
[[nodiscard]] std::string description(const Value* value);

} // namespace VeltoTouch::JSON
