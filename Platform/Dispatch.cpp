#include "Platform/Dispatch.h"

#include "Platform/Mutex.h"
#include "Platform/Thread.h"

#include <cerrno>
#include <deque>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

// The kernel's sched_attr in its first form.
struct SchedulingAttributes {
    std::uint32_t size;
    std::uint32_t policy;
    std::uint64_t flags;
    std::int32_t nice;
    std::uint32_t priority;
    std::uint64_t runtime;
    std::uint64_t deadline;
    std::uint64_t period;
};

constexpr int kInteractivePriority = 1;     // below every thread that serves a device
constexpr std::uint64_t kSliceNs = 100'000; // the shortest that the kernel accepts

// Asks for short time slices: a thread that runs little and rarely then preempts computing threads sooner (kernel 6.12
// and later; others ignore it).
void askForShortSlices() noexcept {
    SchedulingAttributes attributes{};
    attributes.size = sizeof attributes;
    attributes.policy = SCHED_OTHER;
    attributes.nice = getpriority(PRIO_PROCESS, 0); // as it is
    attributes.runtime = kSliceNs;
    syscall(SYS_sched_setattr, 0, &attributes, 0U);
}

// An ordinary thread that wakes may wait for the end of a computing thread's tick, some milliseconds; a real-time
// thread does not.
void beInteractive() noexcept {
    const sched_param parameters{.sched_priority = kInteractivePriority};
    if (pthread_setschedparam(pthread_self(), SCHED_RR, &parameters) != 0)
        askForShortSlices();
}

} // namespace

void DispatchSemaphore::wait() noexcept {
    while (sem_wait(&_semaphore) != 0 && errno == EINTR) {
    }
}

Ref<DispatchSemaphore> dispatch_semaphore_create(unsigned count) { return makeRef<DispatchSemaphore>(count); }

void dispatch_semaphore_wait(dispatch_semaphore_t semaphore) noexcept { semaphore->wait(); }

void dispatch_semaphore_signal(dispatch_semaphore_t semaphore) noexcept { semaphore->signal(); }

struct DispatchQueue::Line {
    Mutex lock;
    std::deque<Block> blocks VELTO_GUARDED_BY(lock);
    const Ref<DispatchSemaphore> signal = dispatch_semaphore_create(0); // one a block, and one for the end

    void push(Block block) {
        {
            const MutexLock guard(lock);
            blocks.push_back(std::move(block));
        }
        signal->signal();
    }

    // Returns the next block, or an empty one at the end.
    [[nodiscard]] Block next() {
        signal->wait();
        const MutexLock guard(lock);
        if (blocks.empty())
            return {};
        Block block = std::move(blocks.front());
        blocks.pop_front();
        return block;
    }
};

DispatchQueue::DispatchQueue(const char* label, dispatch_qos_class_t quality) : _line(std::make_shared<Line>()) {
    NSThread::detachNewThreadWithBlock(label, [line = _line, quality] { work(line, quality); });
}

DispatchQueue::~DispatchQueue() { _line->signal->signal(); }

void DispatchQueue::push(Block block) { _line->push(std::move(block)); }

void DispatchQueue::work(const std::shared_ptr<Line>& line, dispatch_qos_class_t quality) {
    if (quality == QOS_CLASS_USER_INTERACTIVE)
        beInteractive();
    while (const Block block = line->next())
        block();
}

Ref<DispatchQueue> dispatch_queue_create(const char* label, dispatch_qos_class_t quality) {
    return makeRef<DispatchQueue>(label, quality);
}

void dispatch_async(dispatch_queue_t queue, Block block) { queue->push(std::move(block)); }

void dispatch_sync(dispatch_queue_t queue, const Block& block) {
    const Ref<DispatchSemaphore> done = dispatch_semaphore_create(0);
    dispatch_async(queue, [block, done] {
        block();
        done->signal();
    });
    done->wait();
}

} // namespace VeltoTouch
