#pragma once

#include "Platform/Value.h"

#include <functional>

// A thread's run loop. It has named modes: a run handles the sources of one mode and the blocks queued for it. Sources
// come from devices and event services that are scheduled on the loop.

namespace VeltoTouch {

// A loop belongs to its thread and may outlive it: what other threads call then does nothing.
class CFRunLoop : public Object {};
using CFRunLoopRef = CFRunLoop*;

enum CFRunLoopRunResult : std::int32_t {
    kCFRunLoopRunFinished = 1,      // the mode has no sources
    kCFRunLoopRunStopped = 2,       // CFRunLoopStop
    kCFRunLoopRunTimedOut = 3,      // the time is over
    kCFRunLoopRunHandledSource = 4, // one source was handled; running a block handles none
};

// Returns the calling thread's loop, which is made on first use. Throws std::system_error.
[[nodiscard]] CFRunLoopRef CFRunLoopGetCurrent();

// Runs the calling thread's loop: first the blocks queued for the mode, then one source after the other, until it is
// stopped, the mode has no sources, `seconds` have passed (infinity: never) or, if `returnAfterSourceHandled`, one
// source was handled. A stop wins over a handled source. A stop or block that came before the run is not lost.
CFRunLoopRunResult CFRunLoopRunInMode(CFStringRef mode, double seconds, bool returnAfterSourceHandled);

// Queues a block for the loop's thread, to be run when the loop runs in that mode. Does not wake the loop. Any thread.
void CFRunLoopPerformBlock(CFRunLoopRef loop, CFStringRef mode, std::function<void()> block);

// Ends the current run or, if there is none, the next. Any thread.
void CFRunLoopStop(CFRunLoopRef loop) noexcept;

// Makes a waiting loop look at its blocks. Any thread.
void CFRunLoopWakeUp(CFRunLoopRef loop) noexcept;

} // namespace VeltoTouch
