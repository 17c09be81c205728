#pragma once

#include "Platform/Object.h"

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Property values: immutable trees of null, numbers, strings, arrays, dictionaries and data. Nil, the
// absent value, is a null `Ref<Value>`; `Null` is a value of its own (JSON's null). Values are shared
// freely between threads.

namespace VeltoTouch {

class Value : public Object {
public:
    enum class Kind : std::uint8_t { Null, Number, String, Array, Dictionary, Data };

    // The deepest nesting, which lets code walk a tree by recursion; JSON is read to this depth. Constructing a deeper
    // value throws std::length_error.
    static constexpr std::size_t kDeepest = 1024;

    [[nodiscard]] Kind kind() const noexcept { return _kind; }
    // Returns the levels of the tree: 1 for a value that holds no others.
    [[nodiscard]] std::size_t depth() const noexcept { return _depth; }

protected:
    explicit Value(Kind kind, std::size_t depth = 1) : _kind(kind), _depth(checkedDepth(depth)) {}
    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;

private:
    [[nodiscard]] static std::size_t checkedDepth(std::size_t depth);

    const Kind _kind;
    const std::size_t _depth;
};

// Returns `value` as a T, or null if it is nil or of another kind.
template <class T>
[[nodiscard]] const T* as(const Value* value) noexcept {
    return value != nullptr && value->kind() == T::kKind ? static_cast<const T*>(value) : nullptr;
}
template <class T>
[[nodiscard]] const T* as(const Ref<Value>& value) noexcept {
    return as<T>(value.get());
}

class Null final : public Value {
public:
    static constexpr Kind kKind = Kind::Null;
    Null() : Value(kKind) {}
};

// Converts a double to an unsigned 64-bit integer: truncated toward zero; NaN is 0, 2^64 and above saturate, and a
// negative is converted to signed (saturated) and wraps.
[[nodiscard]] std::uint64_t unsignedReading(double number) noexcept;

// A number keeps the type it was made of, so that a boolean is written as one, and can be read as any of the types
// below.
class Number final : public Value {
public:
    static constexpr Kind kKind = Kind::Number;
    using Content = std::variant<bool, std::int64_t, std::uint64_t, float, double>;

    explicit Number(Content content) : Value(kKind), _content(content) {}

    [[nodiscard]] static Ref<Number> withBool(bool number) { return makeRef<Number>(number); }
    [[nodiscard]] static Ref<Number> withLongLong(std::int64_t number) { return makeRef<Number>(number); }
    [[nodiscard]] static Ref<Number> withUnsignedInt(std::uint32_t number) { return withUnsignedLong(number); }
    [[nodiscard]] static Ref<Number> withUnsignedLong(std::uint64_t number) { return makeRef<Number>(number); }
    [[nodiscard]] static Ref<Number> withFloat(float number) { return makeRef<Number>(number); }
    [[nodiscard]] static Ref<Number> withDouble(double number) { return makeRef<Number>(number); }

    [[nodiscard]] const Content& content() const noexcept { return _content; }
    [[nodiscard]] bool isBool() const noexcept { return std::holds_alternative<bool>(_content); }

    // Returns whether the number is not equal to 0; NaN and 0.5 are true.
    [[nodiscard]] bool boolValue() const noexcept;
    // Rounded once; infinite beyond the range of a float.
    [[nodiscard]] float floatValue() const noexcept;
    [[nodiscard]] double doubleValue() const noexcept;
    // Truncated toward zero and saturated; NaN is 0; an unsigned above the signed range wraps.
    [[nodiscard]] std::int64_t longLongValue() const noexcept;
    // See `unsignedReading`; a negative integer wraps.
    [[nodiscard]] std::uint64_t unsignedLongLongValue() const noexcept;

private:
    friend class Value;
    [[nodiscard]] bool hasEqualContent(const Number& other) const noexcept;

    const Content _content;
};

// Text, UTF-8 by convention; not checked.
class String final : public Value {
public:
    static constexpr Kind kKind = Kind::String;
    explicit String(std::string text) : Value(kKind), _text(std::move(text)) {}

    [[nodiscard]] const std::string& text() const noexcept { return _text; }

private:
    const std::string _text;
};

class Array final : public Value {
public:
    static constexpr Kind kKind = Kind::Array;
    // No element may be nil.
    explicit Array(std::vector<Ref<Value>> elements);

    [[nodiscard]] std::span<const Ref<Value>> elements() const noexcept { return _elements; }

private:
    const std::vector<Ref<Value>> _elements;
};

// Keys are sorted by their bytes, so that the same content gives the same text.
class Dictionary final : public Value {
public:
    static constexpr Kind kKind = Kind::Dictionary;
    struct Entry {
        std::string key;
        Ref<Value> value;
    };

    // No value may be nil. Of entries with equal keys the last one is kept.
    explicit Dictionary(std::vector<Entry> entries);

    [[nodiscard]] std::span<const Entry> entries() const noexcept { return _entries; }
    // Returns the value under `key`, owned by the dictionary, or null.
    [[nodiscard]] const Value* find(std::string_view key) const noexcept;
    // The same, with a reference.
    [[nodiscard]] Ref<Value> value(std::string_view key) const noexcept;

private:
    // Returns null if there is none.
    [[nodiscard]] const Entry* entryUnder(std::string_view key) const noexcept;

    std::vector<Entry> _entries;
};

// Bytes. `kPadding` more bytes may be read beyond the end, so that JSON can be parsed in place.
class Data final : public Value {
public:
    static constexpr Kind kKind = Kind::Data;
    static constexpr std::size_t kPadding = 64;
    explicit Data(std::string bytes);

    [[nodiscard]] std::string_view bytes() const noexcept { return _bytes; }

private:
    std::string _bytes;
};

// The platform's names for what crosses its boundaries.
using CFStringRef = const String*;
using CFDictionaryRef = const Dictionary*;
using CFPropertyListRef = Value*;

} // namespace VeltoTouch
