#include "Velto/Daemon/Bus/TouchTable.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Daemon/Bus/Replies.h"

#include <cerrno>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>

namespace VeltoTouch::Bus {
namespace {

// A message that answers are made for, on the loop's thread alone.
using Call = std::shared_ptr<sd_bus_message>;
Call retained(sd_bus_message* message) { return {sd_bus_message_ref(message), sd_bus_message_unref}; }

std::string readKey(sd_bus_message* call) {
    const char* key = nullptr;
    checked(sd_bus_message_read(call, "s", &key), "key");
    return key;
}

// What the library calls and expects a number from: nothing is thrown through it.
template <class Step>
int appending(const Step& step) noexcept {
    try {
        return step();
    } catch (const std::exception&) {
        return -ENOMEM; // the only thing that can be wrong
    }
}

} // namespace

struct TouchObject::Table::Functions {
    static TouchObject& of(void* object) { return *static_cast<TouchObject*>(object); }

    static int getProperty(sd_bus_message* call, void* object, sd_bus_error* /*error*/) {
        return answering(call, [&] { get(call, of(object), readKey(call)); });
    }
    static int getPublicProperty(sd_bus_message* call, void* object, sd_bus_error* /*error*/) {
        return answering(call, [&] {
            const std::string key = readKey(call);
            if (!isPublic(key))
                throw CallError(SD_BUS_ERROR_ACCESS_DENIED, "only root and the group velto may read this key");
            get(call, of(object), key);
        });
    }
    static int setProperty(sd_bus_message* call, void* object, sd_bus_error* /*error*/) {
        return answering(call, [&] {
            const std::string key = readKey(call);
            Ref<Value> value = readVariant(call, CallQueue::kLargestValue);
            const auto answer = [answer = answerTo(call, of(object)), key, object](const auto& outcome) {
                answer(outcome);
                if (!std::holds_alternative<CallError>(outcome))
                    of(object).signalProperty(key);
            };
            of(object)._requests.set(key, std::move(value), answer);
        });
    }
    static int getSources(sd_bus_message* call, void* object, sd_bus_error* /*error*/) {
        return answering(call, [&] { of(object).sendReply(call, of(object)._surface.sources().get()); });
    }
    static int reload(sd_bus_message* call, void* object, sd_bus_error* /*error*/) {
        return answering(call, [&] {
            of(object)._surface.reload();
            of(object).sendReply(call, nullptr);
        });
    }
    static void get(sd_bus_message* call, TouchObject& object, const std::string& key) {
        object._requests.get(key, answerTo(call, object));
    }
    static PropertyRequests::Answer answerTo(sd_bus_message* call, TouchObject& object) {
        return [kept = retained(call), &object](const PropertyRequests::Outcome& outcome) {
            answering(kept.get(), [&] {
                if (const auto* error = std::get_if<CallError>(&outcome))
                    throw *error;
                object.sendReply(kept.get(), std::get<Ref<Value>>(outcome).get());
            });
        };
    }
    // Does a step of a call; what fails is the caller's to know.
    template <class Step>
    static int answering(sd_bus_message* call, const Step& step) noexcept {
        attempt(step, [&](const CallError& error) { sendError(call, error); });
        return 1;
    }
    static int device(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                      sd_bus_message* reply, void* object, sd_bus_error* /*error*/) {
        return appending(
            [&] { return sd_bus_message_append(reply, "s", cleanText(of(object)._surface.device).c_str()); });
    }
    static int version(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                       sd_bus_message* reply, void* object, sd_bus_error* /*error*/) {
        return appending([&] { return sd_bus_message_append(reply, "s", of(object).version().c_str()); });
    }
    static int since(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                     sd_bus_message* reply, void* object, sd_bus_error* /*error*/) {
        return sd_bus_message_append(reply, "t", of(object)._since);
    }
    static int configuration(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                             sd_bus_message* reply, void* object, sd_bus_error* /*error*/) {
        return appending(
            [&] { return sd_bus_message_append(reply, "s", cleanText(of(object)._surface.configuration).c_str()); });
    }
    static int keys(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                    sd_bus_message* reply, void* object, sd_bus_error* /*error*/) {
        return appending([&] {
            return appendEach(reply, "{ss}", of(object)._surface.keys(),
                              [](const std::string& key) { return key.c_str(); });
        });
    }
    static int keyboard(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                        sd_bus_message* reply, void* object, sd_bus_error* /*error*/) {
        return appending([&] { return sd_bus_message_append(reply, "s", of(object)._surface.keyboard().c_str()); });
    }
    static int counters(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                        sd_bus_message* reply, void* object, sd_bus_error* /*error*/) {
        return appending([&] {
            return appendEach(reply, "{st}", of(object).counters(), [](std::uint64_t count) { return count; });
        });
    }
    // Appends a dictionary whose entries have these types; `argument` passes a value on to the library.
    template <class Value, class Argument>
    static int appendEach(sd_bus_message* reply, const char* types, const std::map<std::string, Value>& entries,
                          const Argument& argument) {
        int result = sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, types);
        for (const auto& [name, value] : entries) {
            if (result >= 0)
                result = sd_bus_message_append(reply, types, name.c_str(), argument(value));
        }
        return result < 0 ? result : sd_bus_message_close_container(reply);
    }
};

// Everybody may call everything here: the bus's policy says who reaches us.
const sd_bus_vtable TouchObject::Table::rows[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES(kGetProperty, "s", SD_BUS_PARAM(key), "v", SD_BUS_PARAM(value), Functions::getProperty,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES(kGetPublicProperty, "s", SD_BUS_PARAM(key), "v", SD_BUS_PARAM(value),
                             Functions::getPublicProperty, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES(kSetProperty, "sv", SD_BUS_PARAM(key) SD_BUS_PARAM(value), "", "", Functions::setProperty,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES(kGetSources, "", "", "v", SD_BUS_PARAM(sources), Functions::getSources,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD(kReload, "", "", Functions::reload, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Device", "s", Functions::device, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Version", "s", Functions::version, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Since", "t", Functions::since, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Configuration", "s", Functions::configuration, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Keys", "a{ss}", Functions::keys, 0, 0),
    SD_BUS_PROPERTY("Keyboard", "s", Functions::keyboard, 0, 0),
    SD_BUS_PROPERTY("Counters", "a{st}", Functions::counters, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_SIGNAL_WITH_NAMES(
        kGesture, kGestureTypes,
        SD_BUS_PARAM(gesture) SD_BUS_PARAM(region) SD_BUS_PARAM(phase) SD_BUS_PARAM(frame) SD_BUS_PARAM(timeNs), 0),
    SD_BUS_SIGNAL_WITH_NAMES(kPropertyChanged, "sv", SD_BUS_PARAM(key) SD_BUS_PARAM(value), 0),
    SD_BUS_VTABLE_END,
};

} // namespace VeltoTouch::Bus
