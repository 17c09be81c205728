#include "Velto/Commands/Command.h"
#include "Velto/Commands/Hosting.h"
#include "Velto/Daemon/Bus/TouchObject.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/StopSignals.h"
#include "Velto/Daemon/SurfaceKeys.h"
#include "Velto/Daemon/UinputKeyboard.h"
#include "Velto/Options/BusOptions.h"

#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <systemd/sd-daemon.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kText = "Makes the gestures on a surface key presses for everything on this machine:\n"
                              "a tap plays, pauses or steps the volume, a hold keeps the volume key or the\n"
                              "assistant's pressed. Ends when the device goes or with Ctrl-C; no key stays\n"
                              "pressed. Needs the right to write to /dev/uinput. While it runs, get, set,\n"
                              "watch and record reach it over the message bus.";

constexpr const char* kKeyboardName = "Velto Touch Surface Keys";

struct Options {
    DeviceChoice device;
    std::string plugIn; // empty: the program's own
    Bus::Which bus = Bus::Which::System;
    bool withoutKeys = false;
};

// A key of a surface that has fallen silent is released after one to two of them.
constexpr std::chrono::seconds kLongestSilence{1};

// `keyboard` is null if no keys are pressed.
Bus::ServedSurface servedSurface(const Surface::ConnectedDevice& device, const HostedService& service,
                                 const UinputKeyboard* keyboard) {
    return {.device = device.name(),
            .keyboard = [keyboard] { return keyboard == nullptr ? "" : keyboard->node(); },
            .pressedKeys = [keyboard] { return keyboard == nullptr ? 0 : keyboard->pressedKeys(); },
            .properties = {.get = [&service](const std::string& key) { return service.copyProperty(key); },
                           .set = [&service](const std::string& key,
                                             const Ref<Value>& value) { return service.setProperty(key, value); }},
            .deliveredReports = [&device] { return device.backend().deliveredReports(); }};
}

// Runs the loop; returns what it throws.
std::exception_ptr failureOf(EventLoop& loop) noexcept {
    try {
        loop.run();
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

int serve(const Options& options) {
    EventLoop loop;
    const auto endServing = [&loop] { loop.stop(); };
    const auto device = about(options.device.subject(), [&] { return connect(options.device, 1.0); });
    StopSignals signals(loop); // before any thread, and after a recording is read: until then a signal ends the program
    device.backend().removalHandler = endServing;

    std::optional<UinputKeyboard> keyboard;
    std::optional<SurfaceKeys> keys;
    if (!options.withoutKeys) {
        keyboard.emplace(kKeyboardName, MediaKeys::kKeys);
        keys.emplace(
            *keyboard, [&device] { return device.backend().deliveredReports(); }, endServing);
        loop.addTimer(kLongestSilence, [&keys] { keys->releaseIfSilent(); });
    }
    Bus::TouchObject* object = nullptr; // of the loop's thread
    const auto handleGesture = [&](const Gesture& gesture) {
        if (keys)
            keys->handle(gesture);
        loop.post([&object, gesture] { object->tellGesture(gesture); });
    };
    HostedService service = openService(options.plugIn, device, handleGesture);
    Bus::TouchObject served(loop, options.bus, servedSurface(device, service, keyboard ? &*keyboard : nullptr));
    object = &served;

    service.schedule();
    sd_notify(0, "READY=1");
    const std::exception_ptr failure = failureOf(loop);
    sd_notify(0, "STOPPING=1");
    signals.beginEnd();
    service.unschedule();
    if (keys)
        keys->end();
    if (failure) // what is destroyed now may wait for the device, until a signal ends the program
        std::rethrow_exception(failure);
    return 0;
}

} // namespace

Command makeServeCommand(App& program) {
    const auto options = std::make_shared<Options>();
    App* app = program.addCommand("serve", {"velto serve --device surface"}, kText);
    addDevice(*app, options->device, "The surface; see below")->required();
    addPlugIn(*app, options->plugIn);
    addBus(*app, options->bus);
    app->add_flag("--no-keys", options->withoutKeys, "Make no keyboard: gestures are told on the bus alone");
    return {app, [options] { return serve(*options); }};
}

} // namespace VeltoTouch::Velto
