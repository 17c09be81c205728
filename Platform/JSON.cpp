#include "Platform/JSON.h"

#include "Platform/JSONParser.h"
#include "Platform/UTF8.h"

#include <array>
#include <charconv>
#include <cmath>

namespace VeltoTouch::JSON {
namespace {

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

Ref<Value> parse(std::string_view text) {
    const ParsedText parsed(*makeRef<Data>(std::string(text)));
    return parsed.isValid ? valueOf(parsed.root) : nullptr;
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
