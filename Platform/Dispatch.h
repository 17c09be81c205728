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
// Waits without a time-out until the count is above 0, and takes one.
void dispatch_semaphore_wait(dispatch_semaphore_t semaphore) noexcept;
void dispatch_semaphore_signal(dispatch_semaphore_t semaphore) noexcept;

// How soon a queue's blocks run once they are queued.
enum dispatch_qos_class_t : std::uint8_t {
    QOS_CLASS_DEFAULT,          // as any thread
    QOS_CLASS_USER_INTERACTIVE, // at once, where the process may have real-time threads: for short blocks
};

// Runs blocks one after the other, in the order queued, on a worker thread of its own. Its last reference may go
// anywhere, on the worker too: nobody waits for it. Blocks that are queued then still run.
class DispatchQueue final : public Object {
public:
    // Throws std::system_error where no thread can be had.
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
// Runs the block, which must not be empty, later. Any thread; never waits for a block to run.
void dispatch_async(dispatch_queue_t queue, Block block);
// Returns when the block, and all that was queued before it, has run. Not from the queue's own blocks.
void dispatch_sync(dispatch_queue_t queue, const Block& block);

} // namespace VeltoTouch
