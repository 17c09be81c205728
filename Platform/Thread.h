#pragma once

#include <functional>

namespace VeltoTouch::NSThread {

// Runs the block on a new detached thread. The thread blocks all signals, which are the host's, except those of its own
// faults. `name` is for debuggers (its first 15 characters). Creates every thread of the platform layer and the
// plug-in. Throws std::system_error if no thread can be created.
void detachNewThreadWithBlock(const char* name, std::function<void()> block);

} // namespace VeltoTouch::NSThread

namespace VeltoTouch {

// Drops the real-time priority that the calling thread has inherited from its creator.
void beAnOrdinaryThread() noexcept;

} // namespace VeltoTouch
