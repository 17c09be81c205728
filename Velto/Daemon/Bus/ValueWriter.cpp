#include "Platform/JSON.h"
#include "Velto/Daemon/Bus/Room.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <variant>

namespace VeltoTouch::Bus {
namespace {

constexpr const char* kUnwritable = "message";

// The length of the noncharacter that a text begins with: U+FDD0 to U+FDEF, and the last two of each plane. 0 for any
// other beginning.
std::size_t noncharacterLength(std::string_view text) {
    const auto at = [text](std::size_t i) { return i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0; };
    const auto endsPlane = [](int byte, int last) { return byte == 0xBF && (last == 0xBE || last == 0xBF); };
    if (at(0) == 0xEF)
        return (at(1) == 0xB7 && at(2) >= 0x90 && at(2) <= 0xAF) || endsPlane(at(1), at(2)) ? 3 : 0;
    return at(0) >= 0xF0 && (at(1) & 0xF) == 0xF && endsPlane(at(2), at(3)) ? 4 : 0;
}

class Writer {
public:
    explicit Writer(sd_bus_message* message) : _message(message) {}

    [[nodiscard]] std::size_t bytes() const noexcept { return kLargestSent - _room.left(); }

    void append(const Value& value) {
        switch (value.kind()) {
        case Value::Kind::Null:
            return basic("g", SD_BUS_TYPE_SIGNATURE, "");
        case Value::Kind::Number:
            return number(*as<Number>(&value));
        case Value::Kind::String:
            return text(as<String>(&value)->text());
        case Value::Kind::Array:
            return array(*as<Array>(&value));
        case Value::Kind::Dictionary:
            return dictionary(*as<Dictionary>(&value));
        case Value::Kind::Data:
            return data(*as<Data>(&value));
        }
    }

private:
    void open(char type, const char* contents) {
        _room.take(std::strlen(contents));
        checked(sd_bus_message_open_container(_message, type, contents), kUnwritable);
    }
    void close() { checked(sd_bus_message_close_container(_message), kUnwritable); }

    void basic(const char* signature, char type, const void* value) {
        open(SD_BUS_TYPE_VARIANT, signature);
        _room.take();
        checked(sd_bus_message_append_basic(_message, type, value), kUnwritable);
        close();
    }
    void characters(const std::string& text) {
        const std::string clean = cleanText(text);
        _room.take(clean.size());
        checked(sd_bus_message_append_basic(_message, SD_BUS_TYPE_STRING, clean.c_str()), kUnwritable);
    }
    void text(const std::string& text) {
        open(SD_BUS_TYPE_VARIANT, "s");
        characters(text);
        close();
    }
    void write(bool number) {
        const int value = number ? 1 : 0;
        basic("b", SD_BUS_TYPE_BOOLEAN, &value);
    }
    void write(std::int64_t number) { basic("x", SD_BUS_TYPE_INT64, &number); }
    void write(std::uint64_t number) { basic("t", SD_BUS_TYPE_UINT64, &number); }
    void write(double number) { basic("d", SD_BUS_TYPE_DOUBLE, &number); }
    void write(float number) { write(static_cast<double>(number)); }
    void number(const Number& number) {
        std::visit([this](const auto content) { write(content); }, number.content());
    }

    void array(const Array& array) {
        open(SD_BUS_TYPE_VARIANT, "av");
        open(SD_BUS_TYPE_ARRAY, "v");
        for (const Ref<Value>& element : array.elements())
            append(*element);
        close();
        close();
    }
    void dictionary(const Dictionary& dictionary) {
        open(SD_BUS_TYPE_VARIANT, "a{sv}");
        open(SD_BUS_TYPE_ARRAY, "{sv}");
        for (const auto& [key, value] : dictionary.entries()) {
            open(SD_BUS_TYPE_DICT_ENTRY, "sv");
            characters(key);
            append(*value);
            close();
        }
        close();
        close();
    }
    void data(const Data& data) {
        _room.take(data.bytes().size());
        open(SD_BUS_TYPE_VARIANT, "ay");
        checked(sd_bus_message_append_array(_message, SD_BUS_TYPE_BYTE, data.bytes().data(), data.bytes().size()),
                kUnwritable);
        close();
    }

    sd_bus_message* const _message;
    Room _room{kLargestSent};
};

} // namespace

std::string cleanText(std::string_view text) {
    std::string quoted;
    JSON::appendString(quoted, text); // with every malformed sequence replaced
    const Ref<Value> wellFormed = JSON::parse(quoted);
    std::string_view rest = as<String>(wellFormed)->text();
    std::string result;
    while (!rest.empty()) {
        const std::size_t refused = rest.front() == '\0' ? 1 : noncharacterLength(rest);
        if (refused > 0)
            result += "\xEF\xBF\xBD"; // U+FFFD
        else
            result += rest.front();
        rest.remove_prefix(std::max<std::size_t>(refused, 1));
    }
    return result;
}

std::size_t appendVariant(sd_bus_message* message, const Value& value) {
    if (value.depth() > kDeepestValue)
        refuseAsTooMuch("the value is nested too deep for the bus");
    Writer writer(message);
    writer.append(value);
    return writer.bytes();
}

} // namespace VeltoTouch::Bus
