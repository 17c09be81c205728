#pragma once

#include "Platform/Object.h"

#include <cstdint>
#include <functional>
#include <memory>

#include <semaphore.h>

// Serial queues and counting semaphores.

namespace VeltoTouch {

using Block = std::function<void()>;

class DispatchSemaphore final : public Object {
public:
    explicit DispatchSemaphore(unsigned count) noexcept { sem_init(&_semaphore, 0, count); }
    ~DispatchSemaphore() override { sem_destroy(&_semaphore); }

    void wait() noexcept;
    void signal() noexcept { sem_post(&_semaphore); }

private:
    sem_t _semaphore;
};

using dispatch_semaphore_t = DispatchSemaphore*;

[[nodiscard]] Ref<DispatchSemaphore> dispatch_semaphore_create(unsigned count);
// Waits without a time-out until the count is above 0, then decrements it.
void dispatch_semaphore_wait(dispatch_semaphore_t semaphore) noexcept;
void dispatch_semaphore_signal(dispatch_semaphore_t semaphore) noexcept;

// How soon a queue's blocks run once they are queued.
enum dispatch_qos_class_t : std::uint8_t {
    QOS_CLASS_DEFAULT,          // like any thread
    QOS_CLASS_USER_INTERACTIVE, // immediately, if the process may have real-time threads: for short blocks
};

// Runs blocks one after the other, in the order queued, on a worker thread of its own. A block must not throw: an
// exception ends the process. The last reference may be dropped on any thread, the worker included, and does not wait;
// blocks queued by then still run.
class DispatchQueue final : public Object {
public:
    // Throws std::system_error if no thread can be created.
    DispatchQueue(const char* label, dispatch_qos_class_t quality);
    ~DispatchQueue() override;

    void push(Block block);

private:
    struct Line;
    static void work(const std::shared_ptr<Line>& line, dispatch_qos_class_t quality);

    const std::shared_ptr<Line> _line; // shared with the worker, which may outlive the queue
};

using dispatch_queue_t = DispatchQueue*;

// `label` names the worker for debuggers (its first 15 characters).
[[nodiscard]] Ref<DispatchQueue> dispatch_queue_create(const char* label,
                                                       dispatch_qos_class_t quality = QOS_CLASS_DEFAULT);
// Queues the block, which must not be empty, and returns without waiting. Any thread.
void dispatch_async(dispatch_queue_t queue, Block block);
// Queues the block and waits until it, and all queued before it, has run. Any thread but the queue's worker.
void dispatch_sync(dispatch_queue_t queue, const Block& block);

} // namespace VeltoTouch
