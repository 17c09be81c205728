#include "Serve/MediaKeys.h"
#include "Serve/UinputKeyboard.h"
#include "Tools/Command.h"
#include "Tools/Hosting.h"

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace VeltoTouch::Tools {
namespace {

constexpr const char* kDescription = "Example:\n"
                                     "  velto serve --device /dev/hidraw0\n\n"
                                     "Makes the gestures on a surface key presses for everything on this machine:\n"
                                     "a tap plays, pauses or steps the volume, a hold keeps the volume key or the\n"
                                     "assistant's pressed. Ends when the device goes or with Ctrl-C; no key stays\n"
                                     "pressed. Needs the right to write to /dev/uinput.";

constexpr const char* kKeyboardName = "Velto Touch Surface Keys";

struct Options {
    DeviceChoice device;
    std::string plugIn; // empty: the program's own
};

// The keys, for events that come on the host's queue. The first failure is kept for the end; no key is pressed after
// it.
class Keys {
public:
    explicit Keys(std::function<void()> failureHandler) : _failureHandler(std::move(failureHandler)) {}

    void handle(const HIDEvent& event) noexcept {
        if (_failure)
            return;
        try {
            _keys.handle(event);
        } catch (...) {
            _failure = std::current_exception();
            _failureHandler();
        }
    }
    // After the last event. Throws what failed, now or before.
    void end() {
        if (_failure)
            std::rethrow_exception(_failure);
        _keys.releaseAll();
    }

private:
    const std::function<void()> _failureHandler;
    UinputKeyboard _keyboard{kKeyboardName, MediaKeys::kKeys};
    MediaKeys _keys{_keyboard};
    std::exception_ptr _failure;
};

int serve(const Options& options) {
    const auto loop = Ref<RunLoop>::retained(CFRunLoopGetCurrent());
    const auto endServing = [loop] { CFRunLoopStop(loop.get()); };
    const ConnectedDevice device =
        about(options.device.subject(), [&] { return ConnectedDevice(options.device, 1.0); });
    StopSignals signals; // before any thread, and after a recording is read: until then a signal ends the program
    device.backend().removalHandler = endServing;

    Keys keys(endServing);
    HostedService service =
        openService(options.plugIn, device, [&keys](const Ref<HIDEvent>& event) { keys.handle(*event); });
    service.schedule();
    waitForTheEnd(signals);
    signals.beginEnd();
    service.unschedule();
    keys.end();
    return 0;
}

} // namespace

Command makeServeCommand(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* app = program.add_subcommand("serve", kDescription);
    addDevice(*app, options->device, "The surface; see below")->required();
    addPlugIn(*app, options->plugIn);
    return {app, [options] { return serve(*options); }};
}

} // namespace VeltoTouch::Tools
