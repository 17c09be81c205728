#pragma once

#include <functional>

namespace VeltoTouch::NSThread {

// Runs the block on a new thread that nobody joins. The thread blocks all signals but those of its own
// faults: they are the host's. `name` is for debuggers (its first 15 characters). Throws std::system_error if no thread
// can be had. Makes every thread of the platform layer and the plug-in.
void detachNewThreadWithBlock(const char* name, std::function<void()> block);

} // namespace VeltoTouch::NSThread

namespace VeltoTouch {

// Takes a real-time priority from the calling thread, which a thread has from the one that made it.
void beAnOrdinaryThread() noexcept;

} // namespace VeltoTouch
