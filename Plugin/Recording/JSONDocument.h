#pragma once

#include "Platform/JSONExaminer.h"
#include "Platform/Value.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

// JSON text that is read without making values of it, as large recordings are. Reads what JSON::parse reads. No lock;
// a document may be read by several threads at once.

namespace VeltoTouch::JSON {

class Element;
struct ParsedText;

// Parsed text, kept in the parser's own compact form. Elements are views into it and must not outlive it.
class Document {
public:
    // Parses `text` whole. Throws std::bad_alloc if there is no memory for it, std::runtime_error if it is 4 GiB or
    // larger, which the parser cannot address.
    explicit Document(const Data& text);
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document();

    // The top-level element; an absent one if the text is no JSON.
    [[nodiscard]] Element root() const noexcept;
    // The first fault of a text that is no JSON; empty for one that is.
    [[nodiscard]] const std::optional<Fault>& fault() const noexcept;

private:
    std::unique_ptr<ParsedText> _parsed;
};

// One element of a document, or an absent one (a member that an object does not have). An absent element is of no type
// and has no value.
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
    // Makes a value tree of the element, independent of the document; nil for an absent one.
    [[nodiscard]] Ref<Value> value() const;

    // The members with these names, in the order of the names, found in one pass over the object. A member
    // that is not there, and every member of an element that is no object, is absent.
    template <std::size_t Count>
    [[nodiscard]] std::array<Element, Count> members(const std::array<std::string_view, Count>& names) const noexcept {
        std::array<Element, Count> found;
        findMembers(names.data(), found.data(), Count);
        return found;
    }

    // The elements of an array in order; none if it is no array.
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

} // namespace VeltoTouch::JSON
