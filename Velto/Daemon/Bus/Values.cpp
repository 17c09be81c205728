#include "Velto/Daemon/Bus/Values.h"

#include "Platform/JSON.h"

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace VeltoTouch::Bus {
namespace {

constexpr const char* kUnreadable = "unreadable message";
constexpr const char* kUnwritable = "message";

[[noreturn]] void refuse(const std::string& what) { throw CallError(SD_BUS_ERROR_INVALID_ARGS, what); }
[[noreturn]] void refuseAsTooMuch(const std::string& what) { throw CallError(SD_BUS_ERROR_LIMITS_EXCEEDED, what); }

void enter(sd_bus_message* message, char type, const char* contents) {
    checked(sd_bus_message_enter_container(message, type, contents), kUnreadable);
}
void leave(sd_bus_message* message) { checked(sd_bus_message_exit_container(message), kUnreadable); }

// How many bytes there may be.
class Room {
public:
    explicit Room(std::size_t bytes) noexcept : _bytes(bytes) {}

    void take(std::size_t bytes) {
        if (bytes > _bytes)
            refuseAsTooMuch("the value is too large");
        _bytes -= bytes;
    }
    [[nodiscard]] std::size_t left() const noexcept { return _bytes; }

private:
    std::size_t _bytes;
};

// Reads what stands next in a message, whatever it is, as long as it is within bounds.
class Reader {
public:
    Reader(sd_bus_message* message, std::size_t room) : _message(message), _room(room) {}

    Ref<Value> next() {
        char type = 0;
        const char* contents = nullptr;
        checked(sd_bus_message_peek_type(_message, &type, &contents), kUnreadable);
        switch (type) {
        case SD_BUS_TYPE_BOOLEAN:
            return Number::withBool(basic<int>(type) != 0);
        case SD_BUS_TYPE_BYTE:
            return Number::withUnsignedLong(basic<std::uint8_t>(type));
        case SD_BUS_TYPE_UINT16:
            return Number::withUnsignedLong(basic<std::uint16_t>(type));
        case SD_BUS_TYPE_UINT32:
            return Number::withUnsignedLong(basic<std::uint32_t>(type));
        case SD_BUS_TYPE_UINT64:
            return Number::withUnsignedLong(basic<std::uint64_t>(type));
        case SD_BUS_TYPE_INT16:
            return Number::withLongLong(basic<std::int16_t>(type));
        case SD_BUS_TYPE_INT32:
            return Number::withLongLong(basic<std::int32_t>(type));
        case SD_BUS_TYPE_INT64:
            return Number::withLongLong(basic<std::int64_t>(type));
        case SD_BUS_TYPE_DOUBLE:
            return Number::withDouble(basic<double>(type));
        case SD_BUS_TYPE_STRING:
        case SD_BUS_TYPE_OBJECT_PATH:
            return makeRef<String>(text(type));
        case SD_BUS_TYPE_SIGNATURE:
            return signature();
        case SD_BUS_TYPE_VARIANT:
            return variant(contents);
        case SD_BUS_TYPE_STRUCT:
            return elements(type, contents);
        case SD_BUS_TYPE_ARRAY:
            return contents[0] == SD_BUS_TYPE_DICT_ENTRY_BEGIN ? dictionary(contents)
                   : std::strcmp(contents, "y") == 0           ? data()
                                                               : elements(type, contents);
        default:
            refuse("a value of this type cannot be used");
        }
    }

private:
    template <class T>
    T basic(char type) {
        T value{};
        checked(sd_bus_message_read_basic(_message, type, &value), kUnreadable);
        _room.take(sizeof value);
        return value;
    }
    std::string text(char type) {
        const char* characters = nullptr;
        checked(sd_bus_message_read_basic(_message, type, &characters), kUnreadable);
        _room.take(std::strlen(characters) + 1);
        return characters;
    }
    Ref<Value> signature() {
        std::string characters = text(SD_BUS_TYPE_SIGNATURE);
        return characters.empty() ? Ref<Value>(makeRef<Null>()) : makeRef<String>(std::move(characters));
    }
    Ref<Value> data() {
        const void* bytes = nullptr;
        std::size_t size = 0;
        checked(sd_bus_message_read_array(_message, SD_BUS_TYPE_BYTE, &bytes, &size), kUnreadable);
        _room.take(size);
        return makeRef<Data>(std::string(static_cast<const char*>(bytes), size));
    }
    Ref<Value> variant(const char* contents) {
        enter(_message, SD_BUS_TYPE_VARIANT, contents);
        Ref<Value> value = next();
        leave(_message);
        return value;
    }
    Ref<Value> elements(char type, const char* contents) {
        const Level level(*this);
        std::vector<Ref<Value>> values;
        enter(_message, type, contents);
        while (!isAtEnd())
            values.push_back(next());
        leave(_message);
        return makeRef<Array>(std::move(values));
    }
    Ref<Value> dictionary(const char* contents) {
        const Level level(*this);
        if (contents[1] != SD_BUS_TYPE_STRING)
            refuse("the keys of a dictionary must be text");
        const std::string entry(contents + 1, std::strlen(contents) - 2); // without its braces
        std::vector<Dictionary::Entry> entries;
        enter(_message, SD_BUS_TYPE_ARRAY, contents);
        while (!isAtEnd()) {
            enter(_message, SD_BUS_TYPE_DICT_ENTRY, entry.c_str());
            std::string key = text(SD_BUS_TYPE_STRING);
            entries.push_back({.key = std::move(key), .value = next()});
            leave(_message);
        }
        leave(_message);
        return makeRef<Dictionary>(std::move(entries));
    }

    [[nodiscard]] bool isAtEnd() { return checked(sd_bus_message_at_end(_message, 0), kUnreadable) != 0; }

    // One level deeper, while it lives.
    class Level {
    public:
        explicit Level(Reader& reader) : _reader(reader) {
            if (++_reader._depth > kDeepestValue)
                refuseAsTooMuch("the value is nested too deep");
            _reader._room.take(1); // so that empty ones count too
        }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;
        ~Level() { --_reader._depth; }

    private:
        Reader& _reader;
    };

    sd_bus_message* const _message;
    Room _room;
    std::size_t _depth = 0;
};

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
        _room.take(kOverhead);
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
        checked(sd_bus_message_open_container(_message, type, contents), kUnwritable);
    }
    void close() { checked(sd_bus_message_close_container(_message), kUnwritable); }

    void basic(const char* signature, char type, const void* value) {
        open(SD_BUS_TYPE_VARIANT, signature);
        checked(sd_bus_message_append_basic(_message, type, value), kUnwritable);
        close();
    }
    void text(const std::string& characters) {
        _room.take(characters.size());
        basic("s", SD_BUS_TYPE_STRING, cleanText(characters).c_str());
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
            _room.take(key.size());
            open(SD_BUS_TYPE_DICT_ENTRY, "sv");
            checked(sd_bus_message_append_basic(_message, SD_BUS_TYPE_STRING, cleanText(key).c_str()), kUnwritable);
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

    static constexpr std::size_t kOverhead = 16; // of a value: signatures and what fills up to boundaries

    sd_bus_message* const _message;
    Room _room{kLargestSent};
};

} // namespace

Ref<Value> readVariant(sd_bus_message* message, std::size_t room) {
    const char* contents = nullptr;
    char type = 0;
    if (checked(sd_bus_message_peek_type(message, &type, &contents), kUnreadable) == 0 || type != SD_BUS_TYPE_VARIANT)
        throw std::system_error(EBADMSG, std::generic_category(), kUnreadable);
    Ref<Value> value = Reader(message, room).next();
    if (value->depth() > kDeepestValue)
        refuseAsTooMuch("the value is nested too deep");
    return value;
}

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
