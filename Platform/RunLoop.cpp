#include "Platform/RunLoop.h"

#include "Platform/Linux/RunLoop.h"

namespace VeltoTouch {

CFRunLoopRef CFRunLoopGetCurrent() {
    thread_local const Ref<RunLoop> current = makeRef<RunLoop>();
    return current.get();
}

CFRunLoopRunResult CFRunLoopRunInMode(CFStringRef mode, double seconds, bool returnAfterSourceHandled) {
    return RunLoop::of(CFRunLoopGetCurrent()).run(mode->text(), seconds, returnAfterSourceHandled);
}

void CFRunLoopPerformBlock(CFRunLoopRef loop, CFStringRef mode, std::function<void()> block) {
    RunLoop::of(loop).performBlock(mode->text(), std::move(block));
}

void CFRunLoopStop(CFRunLoopRef loop) noexcept { RunLoop::of(loop).stop(); }

void CFRunLoopWakeUp(CFRunLoopRef loop) noexcept { RunLoop::of(loop).wakeUp(); }

} // namespace VeltoTouch
