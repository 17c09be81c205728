#include "Velto/Daemon/Bus/Client.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/Bus/Connection.h"
#include "Velto/Daemon/Bus/Replies.h"
#include "Velto/Daemon/Bus/Values.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch::Bus {
namespace {

constexpr std::uint64_t kPatience = 10'000'000; // microseconds, with a service's loop, which never works for long

[[noreturn]] void fail(const std::string& what) { throw std::runtime_error(what); }

BusHandle connect(Which which) {
    try {
        return connectTo(which);
    } catch (const std::system_error& error) {
        fail("there is no bus: " + error.code().message());
    }
}

using Credentials = std::unique_ptr<sd_bus_creds, Unreferencing<sd_bus_creds_unref>>;

struct FreeNames {
    void operator()(char** names) const noexcept {
        for (char** name = names; *name != nullptr; ++name)
            std::free(*name); // NOLINT(cppcoreguidelines-no-malloc): the library's
        std::free(names);     // NOLINT(cppcoreguidelines-no-malloc)
    }
};

// What the surfaces are called that are served now.
std::vector<std::string> elementsOn(sd_bus* bus) {
    char** list = nullptr;
    checked(sd_bus_list_names(bus, &list, nullptr), "names on the bus");
    const std::unique_ptr<char*, FreeNames> names(list);
    const std::string prefix = nameOf("");
    std::vector<std::string> elements;
    for (char** name = list; *name != nullptr; ++name) {
        if (std::string_view(*name).starts_with(prefix))
            elements.emplace_back(*name + prefix.size());
    }
    std::ranges::sort(elements);
    return elements;
}

std::string choose(sd_bus* bus, Which which, const std::string& device) {
    const std::vector<std::string> elements = elementsOn(bus);
    std::string wanted = elementOf(device);
    if (device.empty() && elements.size() == 1)
        return elements.front();
    if (elements.empty())
        fail(fmt::format("no surface is served (velto serve{} does that)", which == Which::Session ? " --user" : ""));
    if (device.empty())
        fail(fmt::format("several surfaces are served, say which: {}", fmt::join(elements, ", ")));
    if (std::ranges::find(elements, wanted) == elements.end())
        fail(fmt::format("{} is not served, but {}", device, fmt::join(elements, ", ")));
    return wanted;
}

[[noreturn]] void failWith(const sd_bus_error& error) {
    if (sd_bus_error_has_name(&error, SD_BUS_ERROR_ACCESS_DENIED) != 0)
        throw NotAllowed();
    throw Refused(error.message != nullptr ? error.message : error.name);
}

} // namespace

// What is handed on goes by way of the loop, which takes what a handler throws; the library does not.
struct Client::Signals {
    static int gesture(sd_bus_message* signal, void* object, sd_bus_error* /*error*/) {
        auto& client = *static_cast<Client*>(object);
        const char* kindName = nullptr;
        const char* regionName = nullptr;
        std::uint32_t phase = 0; // follows from the kind
        std::uint32_t frame = 0;
        std::uint64_t timeNs = 0;
        if (sd_bus_message_read(signal, kGestureTypes, &kindName, &regionName, &phase, &frame, &timeNs) < 0)
            return 0;
        const auto kind = gestureKindCalled(kindName);
        if (!kind) // of a later version
            return 0;
        const Gesture gesture{
            .kind = *kind, .region = regionCalled(regionName), .frame = frame, .time = HostTime(timeNs)};
        client._watcher->post([&client, gesture] { client._gestureHandler(gesture); });
        return 0;
    }
    // One that cannot be read is of a later version.
    static int property(sd_bus_message* signal, void* object, sd_bus_error* /*error*/) {
        auto& client = *static_cast<Client*>(object);
        const char* key = nullptr;
        if (sd_bus_message_read(signal, "s", &key) < 0)
            return 0;
        const auto post = [&] {
            client._watcher->post([&client, name = std::string(key), value = readVariant(signal, kAnySize)] {
                client._propertyHandler(name, value);
            });
        };
        attempt(post, [](const CallError&) {});
        return 0;
    }
    static int ownerChanged(sd_bus_message* signal, void* object, sd_bus_error* /*error*/) {
        auto& client = *static_cast<Client*>(object);
        const char* owner = nullptr;
        if (sd_bus_message_skip(signal, "ss") < 0 || sd_bus_message_read(signal, "s", &owner) < 0)
            return 0;
        if (*owner == '\0')
            end(client);
        else
            client._watcher->post([&client] { client._beginHandler(); });
        return 0;
    }
    static int disconnected(sd_bus_message* /*signal*/, void* object, sd_bus_error* /*error*/) {
        auto& client = *static_cast<Client*>(object);
        client._watcher->post([&client] { client._lossHandler(); });
        return 0;
    }
    static void end(Client& client) {
        client._watcher->post([&client] { client._endHandler(); });
    }
};

NoAnswer::NoAnswer(Which which)
    : std::runtime_error(fmt::format("the service does not answer (velto doctor{} says what to do)",
                                     which == Which::Session ? " --user" : "")) {}

NotAllowed::NotAllowed()
    : Refused("not allowed (whoever sits at the machine may read settings, statistics and the version; all else takes "
              "root or the group velto)") {}

void Client::failOfLoss() { fail("the bus has gone"); }

std::vector<std::string> servedOn(Which which) { return elementsOn(connect(which).get()); }

Client::Client(Which which, const std::string& device)
    : _which(which), _bus(connect(which)), _element(choose(_bus.get(), which, device)) {
    requireAnswer();
}

Client::Client(Which which, const std::string& device, MayBeUnserved /*tag*/)
    : _which(which), _bus(connect(which)), _element(elementOf(device)) {}

bool Client::isServed() const {
    const std::vector<std::string> elements = elementsOn(_bus.get());
    return std::ranges::find(elements, _element) != elements.end();
}

BusMessage Client::callOf(const char* interface, const char* method) {
    const auto make = [&](sd_bus_message** message) {
        return sd_bus_message_new_method_call(_bus.get(), message, nameOf(_element).c_str(), pathOf(_element).c_str(),
                                              interface, method);
    };
    return madeBy<BusMessage>(make, "call");
}

BusMessage Client::callFor(const char* method, const std::string& key) {
    BusMessage call = callOf(kInterface, method);
    if (sd_bus_message_append(call.get(), "s", key.c_str()) < 0)
        fail("the key is no text");
    return call;
}

BusMessage Client::send(const BusMessage& call, std::uint64_t timeout) {
    BusError error;
    sd_bus_message* reply = nullptr;
    const int result = sd_bus_call(_bus.get(), call.get(), timeout, error.get(), &reply);
    const bool hasEnded = sd_bus_error_has_name(error.get(), SD_BUS_ERROR_NO_REPLY) != 0; // the bus knows that
    if (result == -ETIMEDOUT && !hasEnded)
        throw NoAnswer(_which);
    if (error.isSet())
        failWith(*error.get());
    checked(result, "the bus");
    return BusMessage(reply);
}

void Client::requireAnswer() { std::ignore = send(callOf("org.freedesktop.DBus.Peer", "Ping"), kPatience); }

Ref<Value> Client::getProperty(const std::string& key) {
    return readVariant(send(callFor(isPublic(key) ? kGetPublicProperty : kGetProperty, key)).get(), kAnySize);
}

void Client::setProperty(const std::string& key, const Value& value) {
    const BusMessage call = callFor(kSetProperty, key);
    appendVariant(call.get(), value);
    std::ignore = send(call);
}

Ref<Value> Client::getObjectProperty(const char* name) {
    const BusMessage call = callOf("org.freedesktop.DBus.Properties", "Get");
    checked(sd_bus_message_append(call.get(), "ss", kInterface, name), "call");
    return readVariant(send(call).get(), kAnySize);
}

std::string Client::configuration() {
    const Ref<Value> folder = getObjectProperty("Configuration");
    if (as<String>(folder) == nullptr)
        fail("it does not say where its configuration is");
    return as<String>(folder)->text();
}

uid_t Client::user() {
    const auto make = [this](sd_bus_creds** creds) {
        return sd_bus_get_name_creds(_bus.get(), nameOf(_element).c_str(), SD_BUS_CREDS_EUID, creds);
    };
    const auto creds = madeBy<Credentials>(make, "user");
    uid_t user = 0;
    checked(sd_bus_creds_get_euid(creds.get(), &user), "user");
    return user;
}

Ref<Value> Client::keys() { return getObjectProperty("Keys"); }

Ref<Value> Client::sources() { return readVariant(send(callOf(kInterface, kGetSources)).get(), kAnySize); }

void Client::reload() { std::ignore = send(callOf(kInterface, kReload)); }

void Client::match(const std::string& rule, int (*handler)(sd_bus_message*, void*, sd_bus_error*)) {
    checked(sd_bus_add_match(_bus.get(), nullptr, rule.c_str(), handler, this), "the bus");
}

void Client::watch(EventLoop& loop, std::function<void(const Gesture&)> gestureHandler,
                   std::function<void()> endHandler) {
    _gestureHandler = std::move(gestureHandler);
    follow(loop, kGesture, Signals::gesture, std::move(endHandler));
}

void Client::followProperties(EventLoop& loop, PropertyHandler propertyHandler, std::function<void()> endHandler,
                              std::function<void()> beginHandler, std::function<void()> lossHandler) {
    _propertyHandler = std::move(propertyHandler);
    _beginHandler = std::move(beginHandler);
    _lossHandler = std::move(lossHandler);
    follow(loop, kPropertyChanged, Signals::property, std::move(endHandler));
}

void Client::follow(EventLoop& loop, const char* signal, int (*handler)(sd_bus_message*, void*, sd_bus_error*),
                    std::function<void()> endHandler) {
    _watcher = &loop;
    _endHandler = std::move(endHandler);
    match(fmt::format("type='signal',sender='{}',path='{}',interface='{}',member='{}'", nameOf(_element),
                      pathOf(_element), kInterface, signal),
          handler);
    match(fmt::format("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='{}'",
                      nameOf(_element)),
          Signals::ownerChanged);
    match("type='signal',sender='org.freedesktop.DBus.Local',member='Disconnected'", Signals::disconnected);
    if (!isServed()) // it has gone meanwhile
        Signals::end(*this);
    checked(sd_bus_attach_event(_bus.get(), loop.handle(), SD_EVENT_PRIORITY_NORMAL), "the bus");
}

} // namespace VeltoTouch::Bus
