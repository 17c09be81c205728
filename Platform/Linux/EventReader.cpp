#include "Platform/Linux/EventReader.h"

#include "Platform/Clock.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Thread.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <system_error>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

// The thread and the loop share a slot for one event and a pipe. A byte in the pipe says that the slot was filled when
// it was empty, so there is never more than one byte. Each side owns its end of the pipe and notices when the other
// closes its own: the loop's source hangs up, the thread's wait ends.

namespace VeltoTouch {
namespace {

constexpr std::uint64_t kTicksPerSecond = 1'000'000'000; // of the clock that waits run by

// The newest event that the loop has not taken.
class Slot {
public:
    Slot() = default;
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;
    ~Slot() { std::ignore = exchange(nullptr); }

    // Returns the previous event.
    [[nodiscard]] Ref<HIDEvent> exchange(Ref<HIDEvent> event) noexcept {
        return Ref<HIDEvent>::adopt(_event.exchange(event.leak()));
    }

private:
    std::atomic<HIDEvent*> _event{nullptr};
};

class ReaderThread {
public:
    ReaderThread(FileDescriptor pipe, std::shared_ptr<Slot> slot, EventReader reader)
        : _pipe(std::move(pipe)), _slot(std::move(slot)), _reader(std::move(reader)) {}

    void run() const {
        beAnOrdinaryThread(); // at the loop's priority a slow driver would delay the loop after all
        std::uint64_t due = mach_absolute_time() + _reader.interval();
        while (waitUntil(due)) {
            Ref<HIDEvent> event = _reader.read();
            if (!event || !handOver(std::move(event)))
                return;
            due = std::max(due + _reader.interval(), mach_absolute_time());
        }
    }

private:
    // Returns false when the loop's end of the pipe is closed.
    [[nodiscard]] bool waitUntil(std::uint64_t time) const noexcept {
        const std::uint64_t now = mach_absolute_time();
        const std::uint64_t wait = time > now ? time - now : 0;
        const timespec timeout{.tv_sec = static_cast<time_t>(wait / kTicksPerSecond),
                               .tv_nsec = static_cast<long>(wait % kTicksPerSecond)};
        pollfd listener{.fd = _pipe.get(), .events = 0, .revents = 0};
        return ::ppoll(&listener, 1, &timeout, nullptr) == 0;
    }

    // The same, without SIGPIPE, which the thread blocks.
    [[nodiscard]] bool handOver(Ref<HIDEvent> event) const noexcept {
        const bool isLate = static_cast<bool>(_slot->exchange(std::move(event)));
        return isLate || ::write(_pipe.get(), "", 1) == 1;
    }

    const FileDescriptor _pipe; // goes last, when nothing else is held any more
    const std::shared_ptr<Slot> _slot;
    const EventReader _reader;
};

} // namespace

RunLoopSource startReading(RunLoop& loop, std::string_view mode, EventReader reader,
                           HIDEventService::EventHandler handler) {
    int ends[2]{};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "event reader");
    const auto pipe = std::make_shared<const FileDescriptor>(ends[0]);
    const auto slot = std::make_shared<Slot>();
    auto thread = std::make_shared<const ReaderThread>(FileDescriptor(ends[1]), slot, std::move(reader));

    const auto take = [pipe, slot, handler = std::move(handler)] {
        char signal = 0;
        (void)!::read(pipe->get(), &signal, 1);
        if (const Ref<HIDEvent> event = slot->exchange(nullptr))
            handler(event);
    };
    RunLoopSource source = loop.addDescriptor(mode, pipe->get(), take, [] {});
    NSThread::detachNewThreadWithBlock("event reader", [thread = std::move(thread)] { thread->run(); });
    return source;
}

} // namespace VeltoTouch
