#pragma once

#include "Platform/Backend/HIDEventService.h"
#include "Platform/Linux/RunLoop.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace VeltoTouch {

// What gives one event after the other when it is asked, and may take its time to answer. Both functions are called on
// the reader's thread, and kept until that ends; neither throws.
struct EventReader {
    std::function<Ref<HIDEvent>()> read;     // the next event; nil where there are no more
    std::function<std::uint64_t()> interval; // from one event to the next, in host ticks; asked before each wait
};

// Adds a source to a mode of the calling thread's run loop that gives `handler` what is read. The first event is read
// an interval from now; one that is not taken in time gives way to the next, so that a late loop gets the newest alone.
// The source leaves its mode after the last event.
//
// A thread of its own reads, which has no real-time priority, and the loop never waits for it: it takes an event
// without a lock, and a source that goes leaves a thread that is just reading to end by itself. Throws
// std::system_error.
[[nodiscard]] RunLoopSource startReading(RunLoop& loop, std::string_view mode, EventReader reader,
                                         HIDEventService::EventHandler handler);

} // namespace VeltoTouch
