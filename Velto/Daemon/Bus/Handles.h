#pragma once

#include <cstdint>
#include <memory>
#include <system_error>

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

// The bus library's objects, each with one owner, and its errors as exceptions.

namespace VeltoTouch {

template <auto Unreference>
struct Unreferencing {
    template <class Object>
    void operator()(Object* object) const noexcept {
        Unreference(object);
    }
};

using EventLoopHandle = std::unique_ptr<sd_event, Unreferencing<sd_event_unref>>;
using EventSourceHandle = std::unique_ptr<sd_event_source, Unreferencing<sd_event_source_disable_unref>>;
using BusHandle = std::unique_ptr<sd_bus, Unreferencing<sd_bus_close_unref>>;
using BusMessage = std::unique_ptr<sd_bus_message, Unreferencing<sd_bus_message_unref>>;

constexpr std::uint64_t kDefaultTimeout = 0; // of a call: the library's

// The error that a failed call is answered with.
class BusError {
public:
    BusError() noexcept = default;
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    ~BusError() { sd_bus_error_free(&_error); }

    [[nodiscard]] sd_bus_error* get() noexcept { return &_error; }
    [[nodiscard]] bool isSet() const noexcept { return _error.name != nullptr; }

private:
    sd_bus_error _error{};
};

// Returns the result; throws std::system_error if it is a negative error number.
inline int checked(int result, const char* what) {
    if (result < 0)
        throw std::system_error(-result, std::generic_category(), what);
    return result;
}

// Returns an owner of what the library gives through a pointer to a pointer: checked(f(&out...), what).
template <class Handle, class Make>
[[nodiscard]] Handle madeBy(const Make& make, const char* what) {
    typename Handle::pointer object = nullptr;
    checked(make(&object), what);
    return Handle(object);
}

} // namespace VeltoTouch
