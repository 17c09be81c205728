#include "Velto/Daemon/Bus/TouchObject.h"

#include "Platform/Log.h"
#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/Bus/Connection.h"
#include "Velto/Daemon/Bus/Replies.h"
#include "Velto/Daemon/Bus/TouchTable.h"

#include <array>
#include <chrono>
#include <exception>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <sys/socket.h>

namespace VeltoTouch::Bus {
namespace {

constexpr const char* kReports = "reports";
constexpr const char* kEvents = "events";
constexpr const char* kKeys = "keys";
constexpr std::chrono::seconds kBeat{1};
// Messages that the bus has not taken from us. With more, it is not well.
constexpr std::uint64_t kMostUnsentSignals = 1024;
// Bytes that are on their way to the bus, as the kernel counts them: what is sent next is not far behind. The bus reads
// little at a time, where it is busy.
constexpr int kSocketRoom = 4096;

void complain(std::string_view what, std::string_view why) noexcept {
    std::array<char, 256> message{};
    const auto end = fmt::format_to_n(message.data(), message.size(), "{}: {}", what, why).out;
    os_log_with_type(os_log_create("org.velto.serve", "Bus"), OS_LOG_TYPE_ERROR, {message.data(), end});
}

// The numbers of a dictionary, those of dictionaries in it too.
void addNumbers(std::map<std::string, std::uint64_t>& counters, const Value* value) {
    const auto* dictionary = as<Dictionary>(value);
    if (dictionary == nullptr)
        return;
    for (const auto& [key, member] : dictionary->entries()) {
        if (const auto* number = as<Number>(member))
            counters[key] = number->unsignedLongLongValue();
        else
            addNumbers(counters, member.get());
    }
}

std::uint64_t realTimeNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::nanoseconds(now).count());
}

int nameRequested(sd_bus_message* reply, void* /*object*/, sd_bus_error* /*error*/) {
    if (const sd_bus_error* error = sd_bus_message_get_error(reply); error != nullptr)
        complain("the bus gives no name", error->message);
    return 1;
}

} // namespace

TouchObject::TouchObject(EventLoop& loop, Which which, ServedSurface surface)
    : _which(which), _surface(std::move(surface)), _path(pathOf(elementOf(_surface.device))),
      _requests(loop, _surface.properties), _since(realTimeNow()), _loop(loop) {
    beat();
    loop.addTimer(kBeat, [this] { beat(); });
}

TouchObject::~TouchObject() = default;

// What it reads of the service takes the service's lock: a service that hangs stops the loop, and the watchdog sees it.
void TouchObject::beat() {
    Counters now = counters();
    now.erase(kReports);
    const bool haveChanged = now != _lastCounters;
    _lastCounters = std::move(now);
    if (_bus && sd_bus_is_open(_bus.get()) > 0) {
        if (haveChanged && unsentOn(_bus.get()) < kMostUnsentSignals)
            sd_bus_emit_properties_changed(_bus.get(), _path.c_str(), kInterface, "Counters", nullptr);
        return;
    }
    _bus.reset();
    _calls.reset();
    try {
        connect();
        _hasComplained = false;
    } catch (const std::exception& error) {
        if (!std::exchange(_hasComplained, true))
            complain("there is no bus", error.what());
    }
}

void TouchObject::connect() {
    BusHandle bus = connectTo(_which);
    checked(sd_bus_set_close_on_exit(bus.get(), 0), "connection"); // it would wait for a bus that does not read
    checked(::setsockopt(sd_bus_get_fd(bus.get()), SOL_SOCKET, SO_SNDBUF, &kSocketRoom, sizeof kSocketRoom),
            "connection");
    checked(sd_bus_attach_event(bus.get(), _loop.handle(), SD_EVENT_PRIORITY_NORMAL), "connection");
    checked(sd_bus_add_object_manager(bus.get(), nullptr, kObjects), "object manager");
    checked(sd_bus_add_object_vtable(bus.get(), nullptr, _path.c_str(), kInterface, Table::rows, this), "object");
    _calls.emplace(_loop, bus.get(), [this] { return _requests.isBusy(); });
    _bus = std::move(bus);
    requestName(kName);
    requestName(nameOf(elementOf(_surface.device)));
}

// Stands in line for the name where somebody has it.
void TouchObject::requestName(const std::string& name) {
    checked(sd_bus_request_name_async(_bus.get(), nullptr, name.c_str(), SD_BUS_NAME_QUEUE, nameRequested, this),
            "name");
}

// A call may be of a connection that has gone.
void TouchObject::countAnswer(sd_bus_message* call, std::size_t bytes) {
    if (_calls)
        _calls->countAnswer(call, bytes);
}

void TouchObject::sendReply(sd_bus_message* call, const Value* value) {
    const auto make = [call](sd_bus_message** message) { return sd_bus_message_new_method_return(call, message); };
    const auto reply = madeBy<BusMessage>(make, "reply");
    if (value != nullptr)
        countAnswer(call, appendVariant(reply.get(), *value));
    checked(sd_bus_send(nullptr, reply.get(), nullptr), "reply");
}

void TouchObject::signalGesture(const Gesture& gesture) {
    ++_events;
    if (!_bus || unsentOn(_bus.get()) >= kMostUnsentSignals)
        return;
    const std::string name(nameOf(gesture.kind));
    const std::string region(regionNameOf(gesture));
    // Where the bus has gone, the next beat finds out.
    sd_bus_emit_signal(_bus.get(), _path.c_str(), kInterface, kGesture, kGestureTypes, name.c_str(), region.c_str(),
                       eventMembersOf(gesture).phase, gesture.frame, gesture.time.count());
}

void TouchObject::signalProperty(const std::string& key) {
    if (!isPublic(key) || !_bus || unsentOn(_bus.get()) >= kMostUnsentSignals)
        return;
    const Ref<Value> value = _surface.properties.get(key);
    if (!value)
        return;
    const auto make = [&](sd_bus_message** message) {
        return sd_bus_message_new_signal(_bus.get(), message, _path.c_str(), kInterface, kPropertyChanged);
    };
    const auto signal = madeBy<BusMessage>(make, "signal");
    checked(sd_bus_message_append(signal.get(), "s", key.c_str()), "signal");
    appendVariant(signal.get(), *value);
    sd_bus_send(_bus.get(), signal.get(), nullptr); // where the bus has gone, the next beat finds out
}

TouchObject::Counters TouchObject::counters() const {
    Counters counters;
    addNumbers(counters, _surface.properties.get(std::string(Keys::kDebugInfo)).get());
    addNumbers(counters, _surface.properties.get(std::string(Keys::kEventStats)).get());
    counters[kReports] = _surface.deliveredReports();
    counters[kEvents] = _events;
    counters[kKeys] = _surface.pressedKeys();
    return counters;
}

std::string TouchObject::version() const {
    const Ref<Value> value = _surface.properties.get(std::string(Keys::kVersion));
    std::string text;
    if (const auto* numbers = as<Array>(value)) {
        for (const Ref<Value>& element : numbers->elements()) {
            if (const auto* number = as<Number>(element))
                text += fmt::format("{}{}", text.empty() ? "" : ".", number->longLongValue());
        }
    }
    return text;
}

} // namespace VeltoTouch::Bus
