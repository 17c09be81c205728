#include "Platform/Dispatch.h"
#include "Platform/Mutex.h"

#include <array>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

std::string nameOfThisThread() {
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

TEST(DispatchTest, AQueueRunsItsBlocksInOrderOnAThreadOfItsOwn) {
    const auto queue = dispatch_queue_create("test.velto.a-long-label");
    std::vector<int> order; // no lock: one block at a time, and the last one before the test goes on
    std::vector<int> expected;
    for (int i = 0; i < 1000; ++i) {
        dispatch_async(queue.get(), [&order, i] { order.push_back(i); });
        expected.push_back(i);
    }
    std::string name;
    dispatch_sync(queue.get(), [&name] { name = nameOfThisThread(); });
    EXPECT_EQ(order, expected);
    EXPECT_EQ(name, "test.velto.a-lo");
}

TEST(DispatchTest, ABlockIsDestroyedBeforeTheNextOneRuns) {
    const auto queue = dispatch_queue_create("test");
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> captured = held;
    dispatch_async(queue.get(), [held = std::move(held)] { EXPECT_TRUE(held); });
    dispatch_sync(queue.get(), [&captured] { EXPECT_TRUE(captured.expired()); });
}

TEST(DispatchTest, TheLastReferenceWaitsForNobody) {
    const auto gate = dispatch_semaphore_create(0);
    const auto done = dispatch_semaphore_create(0);
    std::string order;
    auto queue = dispatch_queue_create("test");
    dispatch_async(queue.get(), [gate] { gate->wait(); });
    for (const char letter : {'a', 'b', 'c'})
        dispatch_async(queue.get(), [&order, letter] { order += letter; });
    dispatch_async(queue.get(), [done] { done->signal(); });
    queue = nullptr; // would wait for ever for the first block
    gate->signal();
    done->wait();
    EXPECT_EQ(order, "abc");
}

TEST(DispatchTest, TheLastReferenceMayGoOnTheQueuesOwnThread) {
    const auto done = dispatch_semaphore_create(0);
    // Destroyed when the thread ends.
    struct Farewell {
        Ref<DispatchSemaphore> signal;
        ~Farewell() {
            if (signal)
                signal->signal();
        }
    };
    bool hasRun = false;
    auto queue = dispatch_queue_create("test");
    DispatchQueue* const borrowed = queue.get();
    dispatch_async(borrowed, [&hasRun, done, own = std::move(queue)] {
        thread_local Farewell atTheEnd;
        atTheEnd.signal = done;
        hasRun = true;
    });
    done->wait();
    EXPECT_TRUE(hasRun);
}

TEST(DispatchTest, ASemaphoreStartsWithItsCountAndCountsItsSignals) {
    const auto semaphore = dispatch_semaphore_create(2);
    semaphore->wait();
    semaphore->signal();
    semaphore->signal();
    for (int i = 0; i < 3; ++i)
        semaphore->wait(); // for ever where one has been lost
}

// The kernel's priority of a thread: 20 for an ordinary one, -1 - n for a real-time priority of n.
int kernelPriorityOf(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    file.ignore(1000, ')');
    std::string word;
    for (int field = 3; field <= 18; ++field)
        file >> word;
    return std::stoi(word);
}

TEST(MutexTest, HolderRunsAtThePriorityOfTheThreadThatWaits) {
    constexpr int kPriority = 7;
    Mutex mutex;
    const auto isReady = dispatch_semaphore_create(0);
    const pid_t holder = gettid();
    mutex.lock();
    const int before = kernelPriorityOf(holder);
    bool isAllowed = false;
    const std::jthread waiter([&] {
        const sched_param parameters{.sched_priority = kPriority};
        isAllowed = pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters) == 0;
        isReady->signal();
        const MutexLock guard(mutex);
    });
    isReady->wait();
    while (isAllowed && kernelPriorityOf(holder) == before) // until the other waits; a failure never ends
        sched_yield();
    const int meanwhile = kernelPriorityOf(holder);
    mutex.unlock();
    if (!isAllowed)
        GTEST_SKIP() << "no right to real-time priorities";
    EXPECT_EQ(meanwhile, -1 - kPriority);
    EXPECT_EQ(kernelPriorityOf(holder), before);
}

} // namespace
} // namespace VeltoTouch::Tests
