#pragma once

#include <functional>

namespace VeltoTouch::NSThread {

// Runs the block on a new thread that nobody joins. `name` is for debuggers, at most 15 characters. Throws
// std::system_error where no thread can be had.
void detachNewThreadWithBlock(const char* name, std::function<void()> block);

} // namespace VeltoTouch::NSThread

namespace VeltoTouch {

// Takes a real-time priority from the calling thread, which a thread has from the one that made it.
void beAnOrdinaryThread() noexcept;

} // namespace VeltoTouch
