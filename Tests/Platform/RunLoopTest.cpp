#include "Platform/Linux/RunLoop.h"
#include "Platform/Clock.h"
#include "Platform/Dispatch.h"
#include "Platform/FileDescriptor.h"
#include "Tests/Platform/Times.h"

#include <cstdio>
#include <limits>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

constexpr double kForEver = std::numeric_limits<double>::infinity();

class Pipe {
public:
    Pipe() {
        int ends[2]{};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
        _readEnd = FileDescriptor(ends[0]);
        _writeEnd = FileDescriptor(ends[1]);
    }

    [[nodiscard]] int readEnd() const { return _readEnd.get(); }
    void write(std::string_view text) const {
        EXPECT_EQ(::write(_writeEnd.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    [[nodiscard]] char read() const {
        char byte = '?';
        return ::read(_readEnd.get(), &byte, 1) == 1 ? byte : '!';
    }
    void hangUp() { const FileDescriptor closed = std::move(_writeEnd); }

private:
    FileDescriptor _readEnd;
    FileDescriptor _writeEnd;
};

class RunLoopTest : public testing::Test {
protected:
    const Ref<String> mode = makeRef<String>("Reports");
    const Ref<String> otherMode = makeRef<String>("Other");
    RunLoop& loop = RunLoop::current();
    Pipe pipe;
    std::string happened; // a letter for each call, in order

    CFRunLoopRunResult run(double seconds = 0, bool returnAfterSourceHandled = true) {
        return CFRunLoopRunInMode(mode.get(), seconds, returnAfterSourceHandled);
    }
    void queue(std::function<void()> block) { CFRunLoopPerformBlock(&loop, mode.get(), std::move(block)); }
    [[nodiscard]] std::function<void()> note(char letter) {
        return [this, letter] { happened += letter; };
    }
    // Calls this when the pipe is readable, and notes H when it hangs up.
    [[nodiscard]] RunLoopSource whenReadable(RunLoop::Handler readable) {
        return loop.addDescriptor(mode->text(), pipe.readEnd(), std::move(readable), note('H'));
    }
    // Notes every byte that is written into the pipe, and H when it hangs up.
    [[nodiscard]] RunLoopSource sourceOf(const Pipe& bytes) {
        return loop.addDescriptor(
            mode->text(), bytes.readEnd(), [this, &bytes] { happened += bytes.read(); }, note('H'));
    }
    [[nodiscard]] RunLoopSource timer(std::uint64_t time, RunLoop::TimerHandler handler) {
        return loop.addTimer(mode->text(), time, std::move(handler));
    }
};

TEST(ClockTest, ASleepLastsAtLeastAsLongAsAskedFor) {
    for (const std::uint64_t microseconds : {1U, 2'500U}) {
        const std::uint64_t start = mach_absolute_time();
        usleep(microseconds);
        EXPECT_GE(mach_absolute_time() - start, microseconds * 1000);
    }
}

TEST_F(RunLoopTest, TheResultSaysHowARunEnded) {
    EXPECT_EQ(run(kForEver), kCFRunLoopRunFinished);
    const RunLoopSource source = sourceOf(pipe);
    const std::uint64_t start = mach_absolute_time();
    EXPECT_EQ(run(0.002), kCFRunLoopRunTimedOut);
    EXPECT_GE(mach_absolute_time() - start, 2 * kMillisecond);
    EXPECT_EQ(run(-1), kCFRunLoopRunTimedOut);
    pipe.write("ab");
    EXPECT_EQ(run(kForEver), kCFRunLoopRunHandledSource);
    EXPECT_EQ(happened, "a");
    CFRunLoopStop(&loop);
    EXPECT_EQ(run(kForEver), kCFRunLoopRunStopped);
    EXPECT_EQ(happened, "a");
}

TEST_F(RunLoopTest, ARunEndsInTimeThoughASourceIsAlwaysReady) {
    int calls = 0;
    const RunLoopSource source = whenReadable([&] {
        if (++calls == 100'000)
            CFRunLoopStop(&loop); // too late
    });
    pipe.write("a");
    EXPECT_EQ(run(0, false), kCFRunLoopRunTimedOut);
}

TEST_F(RunLoopTest, WhatABlockQueuesWaitsForTheNextTime) {
    queue([this] {
        happened += '1';
        queue(note('2'));
    });
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    EXPECT_EQ(happened, "1");
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    EXPECT_EQ(happened, "12");
}

TEST_F(RunLoopTest, BlocksRunBeforeTheTestForAnEmptyMode) {
    RunLoopSource source;
    queue([&] { source = sourceOf(pipe); });
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    queue([&] { source = {}; });
    EXPECT_EQ(run(kForEver), kCFRunLoopRunFinished);
}

TEST_F(RunLoopTest, AStopFromBeforeTheRunIsKeptAndEndsThatRunAlone) {
    CFRunLoopStop(&loop);
    queue(note('1'));
    EXPECT_EQ(run(), kCFRunLoopRunStopped);
    EXPECT_EQ(happened, "1");
    EXPECT_EQ(run(), kCFRunLoopRunFinished);

    const RunLoopSource source = sourceOf(pipe);
    queue([this] { CFRunLoopStop(&loop); });
    EXPECT_EQ(run(kForEver), kCFRunLoopRunStopped);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
}

TEST_F(RunLoopTest, AStopWinsOverAHandledSource) {
    const RunLoopSource source = whenReadable([this] {
        happened += pipe.read();
        queue(note('1'));
        CFRunLoopStop(&loop);
    });
    pipe.write("ab");
    for (const bool returnsAfterASource : {true, false})
        EXPECT_EQ(run(kLong, returnsAfterASource), kCFRunLoopRunStopped);
    EXPECT_EQ(happened, "a1b1");
}

TEST_F(RunLoopTest, ModesAreSeparateAndKeepTheOrderOfTheirBlocks) {
    const RunLoopSource source = sourceOf(pipe);
    pipe.write("a");
    for (const char letter : {'1', 'A', '2', 'B', '3', 'C'})
        CFRunLoopPerformBlock(&loop, (letter < 'A' ? mode : otherMode).get(), note(letter));
    EXPECT_EQ(CFRunLoopRunInMode(otherMode.get(), 0, true), kCFRunLoopRunFinished);
    EXPECT_EQ(happened, "ABC");
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(happened, "ABC123a");
}

TEST_F(RunLoopTest, AWakeUpOrAStopFromAnotherThreadEndsTheWait) {
    const RunLoopSource source = sourceOf(pipe);
    // Released by a block of the run: what comes now is too late for the blocks before the wait.
    const auto isRunning = dispatch_semaphore_create(0);
    queue([&] { isRunning->signal(); });
    const std::jthread waker([&] {
        isRunning->wait();
        queue([&] {
            happened += '1';
            isRunning->signal();
        });
        CFRunLoopWakeUp(&loop);
        isRunning->wait();
        CFRunLoopStop(&loop);
    });
    EXPECT_EQ(run(kLong), kCFRunLoopRunStopped);
    EXPECT_EQ(happened, "1");
}

TEST_F(RunLoopTest, AReadySourceDoesNotKeepAnotherFromItsTurn) {
    Pipe busy;
    const RunLoopSource sources[]{sourceOf(busy), sourceOf(pipe)};
    busy.write("bbbbbbbb");
    pipe.write("a");
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_NE(happened.find('a'), std::string::npos) << happened;
}

TEST_F(RunLoopTest, ATimerFiresAtItsTimeAndAgainAsLongAsItSaysWhen) {
    for (const std::uint64_t first : {std::uint64_t{0}, mach_absolute_time(), mach_absolute_time() + kMillisecond}) {
        std::uint64_t due = first;
        int calls = 0;
        const RunLoopSource source = timer(first, [&] {
            EXPECT_GE(mach_absolute_time(), due);
            due = mach_absolute_time() + kMillisecond;
            return ++calls < 3 ? std::optional(due) : std::nullopt;
        });
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(run(kLong), kCFRunLoopRunHandledSource);
        EXPECT_EQ(calls, 3);
        EXPECT_EQ(run(kLong), kCFRunLoopRunFinished);
    }
}

TEST_F(RunLoopTest, AHungUpDescriptorGivesWhatIsLeftAndLeavesItsMode) {
    auto whenTold = kCFRunLoopRunTimedOut;
    const RunLoopSource source = loop.addDescriptor(
        mode->text(), pipe.readEnd(), [this] { happened += pipe.read(); }, [&] { whenTold = run(); });
    pipe.write("ab");
    pipe.hangUp();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(happened, "ab");
    EXPECT_EQ(whenTold, kCFRunLoopRunFinished);
    const Pipe quiet;
    const RunLoopSource other = sourceOf(quiet);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut) << "it is ready for ever";
}

TEST_F(RunLoopTest, ASourceMayTakeItselfOutOfItsModeFromItsHandler) {
    RunLoopSource source;
    std::string word = "long enough to be of no use when it has been destroyed";
    source = whenReadable([&, word] {
        source = {};
        happened = word;
    });
    pipe.write("a");
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(happened, word);
    EXPECT_EQ(run(), kCFRunLoopRunFinished);

    source = timer(0, [&] {
        source = {};
        return std::optional<std::uint64_t>(0);
    });
    EXPECT_EQ(run(kLong), kCFRunLoopRunHandledSource);
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(RunLoopTest, AMovedSourceStaysAndAnOverwrittenOneLeaves) {
    Pipe second;
    RunLoopSource source = sourceOf(pipe);
    RunLoopSource moved = std::move(source);
    pipe.write("a");
    second.write("b");
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    moved = sourceOf(second);
    pipe.write("x");
    EXPECT_EQ(run(0.001, false), kCFRunLoopRunTimedOut);
    EXPECT_EQ(happened, "ab");
    moved = {};
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(RunLoopTest, ALoopOutlivesItsThread) {
    Ref<RunLoop> orphan;
    RunLoopSource source;
    std::thread([&] {
        orphan = Ref<RunLoop>::retained(&RunLoop::current());
        source = orphan->addDescriptor(mode->text(), pipe.readEnd(), note('a'), note('H'));
    }).join();
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> captured = held;
    CFRunLoopPerformBlock(orphan.get(), mode.get(), [this, held = std::move(held)] { happened += '1'; });
    CFRunLoopStop(orphan.get());
    CFRunLoopWakeUp(orphan.get());
    orphan = nullptr;
    EXPECT_FALSE(captured.expired()) << "a source keeps its loop";
    source = {};
    EXPECT_TRUE(captured.expired());
    EXPECT_EQ(happened, "");
}

TEST_F(RunLoopTest, ADescriptorThatCannotBeWaitedForIsRefused) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
    ASSERT_TRUE(file);
    for (const int descriptor : {::fileno(file.get()), -1})
        EXPECT_THROW(std::ignore = loop.addDescriptor(mode->text(), descriptor, note('a'), note('H')),
                     std::system_error);
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

} // namespace
} // namespace VeltoTouch::Tests
