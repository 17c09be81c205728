#include "Velto/Daemon/Bus/Room.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace VeltoTouch::Bus {
namespace {

constexpr const char* kUnreadable = "unreadable message";

[[noreturn]] void refuse(const std::string& what) { throw CallError(SD_BUS_ERROR_INVALID_ARGS, what); }

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
    void enter(char type, const char* contents) {
        _room.take(std::strlen(contents));
        checked(sd_bus_message_enter_container(_message, type, contents), kUnreadable);
    }
    void leave() { checked(sd_bus_message_exit_container(_message), kUnreadable); }

    template <class T>
    T basic(char type) {
        T value{};
        checked(sd_bus_message_read_basic(_message, type, &value), kUnreadable);
        _room.take();
        return value;
    }
    std::string text(char type) {
        const char* characters = nullptr;
        checked(sd_bus_message_read_basic(_message, type, &characters), kUnreadable);
        _room.take(std::strlen(characters));
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
        enter(SD_BUS_TYPE_VARIANT, contents);
        Ref<Value> value = next();
        leave();
        return value;
    }
    Ref<Value> elements(char type, const char* contents) {
        const Level level(*this);
        std::vector<Ref<Value>> values;
        enter(type, contents);
        while (!isAtEnd())
            values.push_back(next());
        leave();
        return makeRef<Array>(std::move(values));
    }
    Ref<Value> dictionary(const char* contents) {
        const Level level(*this);
        if (contents[1] != SD_BUS_TYPE_STRING)
            refuse("the keys of a dictionary must be text");
        const std::string entry(contents + 1, std::strlen(contents) - 2); // without its braces
        std::vector<Dictionary::Entry> entries;
        enter(SD_BUS_TYPE_ARRAY, contents);
        while (!isAtEnd()) {
            enter(SD_BUS_TYPE_DICT_ENTRY, entry.c_str());
            std::string key = text(SD_BUS_TYPE_STRING);
            entries.push_back({.key = std::move(key), .value = next()});
            leave();
        }
        leave();
        return makeRef<Dictionary>(std::move(entries));
    }

    [[nodiscard]] bool isAtEnd() { return checked(sd_bus_message_at_end(_message, 0), kUnreadable) != 0; }

    // One level deeper, while it lives.
    class Level {
    public:
        explicit Level(Reader& reader) : _reader(reader) {
            if (++_reader._depth > kDeepestValue)
                refuseAsTooMuch("the value is nested too deep");
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

} // namespace VeltoTouch::Bus
