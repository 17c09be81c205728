#include "Platform/RunLoop.h"
#include "Platform/Clock.h"
#include "Platform/Dispatch.h"

#include <cstdio>
#include <limits>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

constexpr double kLong = 60; // seconds; a run that takes so long has missed what it waited for
constexpr double kForEver = std::numeric_limits<double>::infinity();
constexpr std::uint64_t kMillisecond = 1'000'000; // in host ticks

// A pipe whose ends are closed at last.
class Pipe {
public:
    Pipe() {
        if (::pipe2(_ends, O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        hangUp();
        ::close(_ends[0]);
    }

    [[nodiscard]] int readEnd() const { return _ends[0]; }
    void write(std::string_view text) const {
        EXPECT_EQ(::write(_ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    [[nodiscard]] char read() const {
        char byte = '?';
        return ::read(_ends[0], &byte, 1) == 1 ? byte : '!';
    }
    void hangUp() {
        if (_ends[1] >= 0)
            ::close(std::exchange(_ends[1], -1));
    }

private:
    int _ends[2]{-1, -1};
};

class RunLoopTest : public testing::Test {
protected:
    const Ref<String> mode = makeRef<String>("Reports");
    const Ref<String> otherMode = makeRef<String>("Other");
    RunLoop& loop = *CFRunLoopGetCurrent();
    Pipe pipe;
    std::string happened; // a letter for each call, in order

    CFRunLoopRunResult run(double seconds = 0, bool returnAfterSourceHandled = true) {
        return CFRunLoopRunInMode(mode.get(), seconds, returnAfterSourceHandled);
    }
    void queue(std::function<void()> block) { CFRunLoopPerformBlock(&loop, mode.get(), std::move(block)); }
    [[nodiscard]] std::function<void()> note(char letter) {
        return [this, letter] { happened += letter; };
    }
    // Notes every byte that is written into the pipe, and H when it hangs up.
    [[nodiscard]] RunLoopSource sourceOf(const Pipe& bytes) {
        return loop.addDescriptor(
            mode->text(), bytes.readEnd(), [this, &bytes] { happened += bytes.read(); }, note('H'));
    }
};

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

TEST_F(RunLoopTest, ARunThatDoesNotReturnAfterASourceGoesOnUntilItIsStopped) {
    const RunLoopSource source = loop.addDescriptor(
        mode->text(), pipe.readEnd(),
        [this] {
            happened += pipe.read();
            if (happened == "abc")
                CFRunLoopStop(&loop);
        },
        [] {});
    pipe.write("abcd");
    EXPECT_EQ(run(kLong, false), kCFRunLoopRunStopped);
    EXPECT_EQ(happened, "abc");
}

TEST_F(RunLoopTest, ARunEndsInTimeThoughASourceIsAlwaysReady) {
    int calls = 0;
    const RunLoopSource source = loop.addDescriptor(
        mode->text(), pipe.readEnd(),
        [&] {
            if (++calls == 100'000)
                CFRunLoopStop(&loop); // too late
        },
        [] {});
    pipe.write("a");
    EXPECT_EQ(run(0, false), kCFRunLoopRunTimedOut);
}

TEST_F(RunLoopTest, BlocksRunInOrderAndAreNoSources) {
    const RunLoopSource source = sourceOf(pipe);
    queue(note('1'));
    queue(note('2'));
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    EXPECT_EQ(happened, "12");
}

TEST_F(RunLoopTest, WhatABlockQueuesWaitsForTheNextTime) {
    int runs = 0;
    std::function<void()> again = [&] {
        if (++runs < 10)
            queue(again);
    };
    queue(again);
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    EXPECT_EQ(runs, 1);
    while (runs < 10)
        EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(RunLoopTest, BlocksFromBeforeTheRunComeBeforeTheTestForAnEmptyMode) {
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

TEST_F(RunLoopTest, AStopWinsOverAHandledSourceAndBlocksOfTheHandlerRunBeforeTheReturn) {
    const RunLoopSource source = loop.addDescriptor(
        mode->text(), pipe.readEnd(),
        [this] {
            happened += pipe.read();
            queue(note('1'));
            CFRunLoopStop(&loop);
        },
        [] {});
    pipe.write("a");
    EXPECT_EQ(run(kForEver), kCFRunLoopRunStopped);
    EXPECT_EQ(happened, "a1");
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
    const std::uint64_t start = mach_absolute_time();
    std::uint64_t due = start + 2 * kMillisecond;
    const RunLoopSource timer = loop.addTimer(mode->text(), due, [&]() -> std::optional<std::uint64_t> {
        EXPECT_GE(mach_absolute_time(), due);
        happened += 'T';
        if (happened.size() == 3)
            return std::nullopt;
        return due += kMillisecond;
    });
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(run(kLong), kCFRunLoopRunHandledSource);
    EXPECT_EQ(run(kLong), kCFRunLoopRunFinished);
    EXPECT_EQ(happened, "TTT");
}

TEST_F(RunLoopTest, ATimeThatHasGoneIsAtOnceAndOneToComeIsNot) {
    const std::uint64_t later = mach_absolute_time() + 3600 * 1000 * kMillisecond;
    for (const std::uint64_t gone : {std::uint64_t{0}, mach_absolute_time()}) {
        const RunLoopSource timer = loop.addTimer(mode->text(), gone, [&] { return std::optional(later); });
        EXPECT_EQ(run(kLong), kCFRunLoopRunHandledSource);
        EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    }
}

TEST_F(RunLoopTest, AHungUpDescriptorGivesWhatIsLeftAndIsOutOfItsMode) {
    const RunLoopSource source = sourceOf(pipe);
    pipe.write("ab");
    pipe.hangUp();
    for (const char* soFar : {"a", "ab", "abH"}) {
        EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
        EXPECT_EQ(happened, soFar);
    }
    EXPECT_EQ(run(kForEver), kCFRunLoopRunFinished);

    const Pipe quiet;
    const RunLoopSource other = sourceOf(quiet);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    EXPECT_EQ(happened, "abH");
}

TEST_F(RunLoopTest, ADescriptorIsOutOfItsModeWhenItIsToldThatItHungUp) {
    auto atTheEnd = kCFRunLoopRunTimedOut;
    const RunLoopSource source = loop.addDescriptor(mode->text(), pipe.readEnd(), note('a'), [&] { atTheEnd = run(); });
    pipe.hangUp();
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(atTheEnd, kCFRunLoopRunFinished);
}

TEST_F(RunLoopTest, ASourceMayTakeItselfOutOfItsModeFromItsHandler) {
    RunLoopSource source;
    std::string word = "long enough to be of no use when it has been destroyed";
    source = loop.addDescriptor(
        mode->text(), pipe.readEnd(),
        [&, word] {
            source = {};
            happened = word;
        },
        [] {});
    pipe.write("a");
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(happened, word);
    EXPECT_EQ(run(), kCFRunLoopRunFinished);

    source = loop.addTimer(mode->text(), 0, [&] {
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

TEST_F(RunLoopTest, ALoopOutlivesItsThreadAndWhatOthersQueueThenIsDroppedWithIt) {
    Ref<RunLoop> orphan;
    RunLoopSource source;
    std::thread([&] {
        orphan = Ref<RunLoop>::retained(CFRunLoopGetCurrent());
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
