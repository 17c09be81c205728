#include "Velto/Commands/Command.h"
#include "Velto/Commands/PlugIn.h"
#include "Velto/Daemon/Bus/TouchObject.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/GestureLog.h"
#include "Velto/Daemon/ReloadSignal.h"
#include "Velto/Daemon/ServedConfiguration.h"
#include "Velto/Daemon/StopSignals.h"
#include "Velto/Daemon/SurfaceKeys.h"
#include "Velto/Daemon/UinputKeyboard.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/ConfigurationOptions.h"
#include "Velto/Options/DeviceOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Output/Terminal.h"

#include <chrono>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <systemd/sd-daemon.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kServeText = "Makes the gestures on a surface key presses for everything on this machine:\n"
                                   "a tap plays, pauses or steps the volume, a hold keeps the volume key or the\n"
                                   "assistant's pressed. Ends when the device goes or with Ctrl-C; no key stays\n"
                                   "pressed. Needs the right to write to /dev/uinput. While it runs, get, set,\n"
                                   "watch and record reach it over the message bus.\n"
                                   "\n"
                                   "Other keys, and settings, come from /etc/velto-touch/config.toml and the files\n"
                                   "config.d/*.toml beside it. They are read again on SIGHUP: a setting that was\n"
                                   "only tried (velto set) ends with that. Standard error has a line per gesture.";

constexpr const char* kKeyboardName = "Velto Touch Surface Keys";

struct ServeOptions {
    DeviceChoice device;
    std::string plugIn; // empty: the program's own
    Bus::Which bus = Bus::Which::System;
    std::string folder = kConfigurationFolder;
    std::vector<Setting> trial;
    bool withoutKeys = false;
};

// A key of a surface that has fallen silent is released after one to two of them.
constexpr std::chrono::seconds kLongestSilence{1};

// Logs one line, unless standard error does not take it: serving does not wait for it.
void logServing(const std::string& line) { writeErrorLineIfTaken("velto: " + line); }

// Runs the loop; returns what it throws.
std::exception_ptr failureOf(StopSignals& signals) noexcept {
    try {
        signals.run({}, [] { sd_notify(0, "STOPPING=1"); });
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

// All that serving takes, in the order in which it is made. Its calls but `handle` come on the loop's thread.
class Serving {
public:
    Serving(const ServeOptions& options, ConfigurationEntries trial)
        : _folder(options.folder), _configuration(options.folder, std::move(trial), logServing),
          _device(about(options.device.subject(), [&] { return connect(options.device, 1.0); })), _signals(_loop),
          _reloadSignal(_loop, [this] { reload(); }), _keyboard(options.withoutKeys ? nullptr : makeKeyboard()),
          _keys(options.withoutKeys ? nullptr : makeKeys()), _service(opened(options.plugIn)),
          _object(_loop, options.bus, servedSurface()) {
        if (_keys)
            _loop.addTimer(kLongestSilence, [this] { _keys->releaseIfSilent(); });
        _configuration.write(properties());
    }
    Serving(const Serving&) = delete;
    Serving& operator=(const Serving&) = delete;
    ~Serving() = default;

    // Until the device goes or a signal comes.
    void run() {
        _service.schedule();
        sd_notify(0, "READY=1");
        const std::exception_ptr failure = failureOf(_signals);
        _service.unschedule();
        if (_keys)
            _keys->end();
        if (failure) // what is destroyed now may wait for the device, until a signal ends the program
            std::rethrow_exception(failure);
    }

private:
    // The device may go as soon as it is open.
    [[nodiscard]] HostedService opened(const std::string& plugIn) {
        _device.backend().removalHandler = [this] { _loop.stop(); };
        return openService(plugIn, _device, [this](const Gesture& gesture) { handle(gesture); });
    }

    // On the host's queue.
    void handle(const Gesture& gesture) {
        const std::uint16_t key = _keys ? _keys->handle(gesture) : kNoKey;
        _loop.post([this, gesture, key] {
            _object.signalGesture(gesture);
            if (const auto line = _log.add(gesture, key))
                logServing(*line);
        });
    }

    void reload() {
        sd_notify(0, "RELOADING=1");
        _configuration.read();
        _configuration.write(signalledProperties());
        if (_keys)
            _keys->setTable(_configuration.keys());
        logServing(_folder + ": configuration reloaded");
        sd_notify(0, "READY=1");
    }

    [[nodiscard]] Bus::ServiceProperties properties() const {
        return {.get = [this](const std::string& key) { return _service.copyProperty(key); },
                .set = [this](const std::string& key,
                              const Ref<Value>& value) { return _service.setProperty(key, value); }};
    }
    // What is written is signalled on the bus too.
    [[nodiscard]] Bus::ServiceProperties signalledProperties() {
        return {.get = properties().get, .set = [this](const std::string& key, const Ref<Value>& value) {
                    const bool isTaken = _service.setProperty(key, value);
                    if (isTaken)
                        _object.signalProperty(key);
                    return isTaken;
                }};
    }
    [[nodiscard]] Bus::ServedSurface servedSurface() {
        return {.device = _device.name(),
                .configuration = _configuration.path(),
                .keyboard = [this] { return _keyboard ? _keyboard->node() : ""; },
                .pressedKeys = [this] { return _keyboard ? _keyboard->pressedKeys() : 0; },
                .properties = properties(),
                .deliveredReports = [this] { return _device.backend().deliveredReports(); },
                .keys = [this] { return _configuration.keyNames(); },
                .sources = [this] { return _configuration.sources(properties()); },
                .reload = [this] { reload(); }};
    }
    [[nodiscard]] std::unique_ptr<UinputKeyboard> makeKeyboard() const {
        return std::make_unique<UinputKeyboard>(kKeyboardName, keysIn(_configuration.keys()));
    }
    [[nodiscard]] std::unique_ptr<SurfaceKeys> makeKeys() {
        return std::make_unique<SurfaceKeys>(
            *_keyboard, _configuration.keys(), [this] { return _device.backend().deliveredReports(); },
            [this] { _loop.stop(); });
    }

    const std::string _folder;
    EventLoop _loop;
    ServedConfiguration _configuration;
    const Surface::ConnectedDevice _device;
    StopSignals _signals; // before any thread, and after a recording is read: until then a signal ends the program
    const ReloadSignal _reloadSignal;
    const std::unique_ptr<UinputKeyboard> _keyboard; // null without keys, as the next
    const std::unique_ptr<SurfaceKeys> _keys;
    GestureLog _log;
    HostedService _service;
    Bus::TouchObject _object;
};

int run(const ServeOptions& options) {
    ConfigurationEntries trial;
    try {
        trial = entriesOf(options.trial, "velto serve --set");
    } catch (const std::invalid_argument& error) {
        complain("--set", error.what());
        return kWrongUsage;
    }
    warnOfDoubtfulSettings(options.trial);
    Serving(options, std::move(trial)).run();
    return 0;
}

} // namespace

Command makeServeCommand(App& program) {
    const auto options = std::make_shared<ServeOptions>();
    App* app = program.addCommand("serve", {"velto serve --device surface"}, kServeText);
    addDeviceToServe(*app, options->device);
    addPlugIn(*app, options->plugIn);
    addBus(*app, options->bus);
    addConfiguration(*app, options->folder,
                     std::string("The configuration's folder (default: ") + kConfigurationFolder + ")");
    addSettings(*app, options->trial, KeyScope::Service,
                "For a trial: a setting, or a key such as keys.tap.play-pause=KEY_MUTE, whatever the configuration "
                "says; may be given several times")
        ->allow_extra_args(false);
    app->addList(keyList());
    app->add_flag("--no-keys", options->withoutKeys,
                  "Make no keyboard; gestures are only signalled on the bus and logged");
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Velto
