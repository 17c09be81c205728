#pragma once

#include "Platform/Backend/HIDEventService.h"
#include "Platform/Linux/RunLoop.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace VeltoTouch {

// Reads one event after the other from a source that may take long to answer. Both functions are called on the reader's
// thread and kept until that thread ends; neither throws.
struct EventReader {
    std::function<Ref<HIDEvent>()> read;     // the next event; nil if there are no more
    std::function<std::uint64_t()> interval; // from one event to the next, in host ticks; asked before each wait
};

// Adds a source to a mode of the calling thread's run loop that passes each event read to `handler`. The first event is
// read one interval from now. An event that the loop has not taken when the next is read is replaced by it. The source
// leaves its mode after the last event.
//
// Events are read on a thread without real-time priority. The loop never waits for that thread: an event is handed over
// without a lock, and a thread that is reading when its source is destroyed ends by itself. Throws std::system_error.
[[nodiscard]] RunLoopSource startReading(RunLoop& loop, std::string_view mode, EventReader reader,
                                         HIDEventService::EventHandler handler);

} // namespace VeltoTouch
