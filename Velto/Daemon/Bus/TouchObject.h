#pragma once

#include "Velto/Daemon/Bus/CallQueue.h"
#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Daemon/Bus/PropertyRequests.h"
#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace VeltoTouch::Bus {

// The served surface, as the object shows it.
struct ServedSurface {
    std::string device;        // as it was given on the command line
    std::string configuration; // the folder
    // The keyboard's event node, empty if no keys are pressed, and the number of keys pressed so far.
    std::function<std::string()> keyboard = [] { return std::string(); };
    std::function<std::uint64_t()> pressedKeys = [] { return std::uint64_t{0}; };
    ServiceProperties properties;
    std::function<std::uint64_t()> deliveredReports;          // so far
    std::function<std::map<std::string, std::string>()> keys; // names of keys, by what they are for
    std::function<Ref<Value>()> sources;                      // of the settings' values, and of the keys
    std::function<void()> reload;                             // of the configuration
};

// A surface as an object on the message bus, with the interface org.velto.Touch1:
//
//   GetProperty(s key) -> v               a property of the service
//   GetPublicProperty(s key) -> v         one that shows what the surface does: isPublic
//   SetProperty(s key, v value)           writes one, from the next report on
//   GetSources() -> v                     where the settings' values and the keys come from
//   Reload()                              reads the configuration anew
//   Device      s                         such as /dev/hidraw0
//   Version     s                         the service's, such as 19.0.0
//   Since       t                         when the service started (real-time clock, ns)
//   Configuration s                       the folder that the configuration is read from
//   Keys        a{ss}                     the keys of gestures, such as KEY_MUTE of keys.tap.play-pause
//   Keyboard    s                         the event node of the keyboard; empty if no keys are pressed
//   Counters    a{st}                     reports, events and pressed keys, and what the recognizer counts, under its
//                                         names; a change is signalled at most once a second, and not for reports alone
//   Gesture(s, s, u, u, t)                gesture, region (empty where it has none), phase, frame number, time of the
//                                         report (monotonic clock, ns)
//   PropertyChanged(s, v)                 key and present value of a public one, after it was written by a call or a
//                                         reload
//
// The bus's policy says who may call what. Without a bus the object tries again every second and signals nothing. What
// a bus that does not read has not taken is bounded, and so is what clients do not read: see CallQueue.
//
// The loop's thread.
class TouchObject {
public:
    // `loop` and what `surface` refers to outlive this; `loop` must not run after this is destroyed.
    TouchObject(EventLoop& loop, Which which, ServedSurface surface);
    TouchObject(const TouchObject&) = delete;
    TouchObject& operator=(const TouchObject&) = delete;
    ~TouchObject();

    void signalGesture(const Gesture& gesture);
    // Called after a property was written, on any thread: signals the value that it has now, so that the last signal
    // has the last value. Does nothing for a property that is not public.
    void signalProperty(const std::string& key);

private:
    using Counters = std::map<std::string, std::uint64_t>;

    struct Table; // of the bus's functions

    void beat();
    void connect();
    void requestName(const std::string& name);
    void countAnswer(sd_bus_message* call, std::size_t bytes);
    void sendReply(sd_bus_message* call, const Value* value);
    [[nodiscard]] Counters counters() const;
    [[nodiscard]] std::string version() const;

    const Which _which;
    const ServedSurface _surface;
    const std::string _path;
    PropertyRequests _requests;
    const std::uint64_t _since;
    std::uint64_t _events = 0;
    Counters _lastCounters; // but for the reports
    bool _hasComplained = false;
    EventLoop& _loop;
    std::optional<CallQueue> _calls; // of the bus
    BusHandle _bus;                  // null if there is none
};

} // namespace VeltoTouch::Bus
