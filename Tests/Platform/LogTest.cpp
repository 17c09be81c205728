#include "Platform/Backend/LogQueue.h"
#include "Platform/Testing/LogCapture.h"
#include "Tests/Support/TestDevice.h"

#include <cstdlib>
#include <string>

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <gmock/gmock.h>

// What a call of this thread takes that an ordinary thread may hold: counted while it is watched. The sanitizers need
// these functions for themselves.
#if !VELTO_IS_SANITIZED
namespace {
thread_local bool isWatched = false;
thread_local int takenCount = 0; // of plain mutexes, and of memory from the heap, whose locks are plain

int kindOfAMutexThatInherits() {
    static const int kind = [] {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
        pthread_mutex_t mutex;
        pthread_mutex_init(&mutex, &attributes);
        return mutex.__data.__kind;
    }();
    return kind;
}
} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static const auto next = reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    takenCount += isWatched && mutex->__data.__kind != kindOfAMutexThatInherits() ? 1 : 0;
    return next(mutex);
}

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* malloc(std::size_t size) noexcept {
    takenCount += isWatched ? 1 : 0;
    return __libc_malloc(size);
}
#endif

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::Not;

// A debug, a default and an error message.
void logOneOfEachLevel(os_log_t log) {
    os_log_with_type(log, OS_LOG_TYPE_DEBUG, "routine");
    os_log_with_type(log, OS_LOG_TYPE_DEFAULT, "{event} %s");
    os_log_with_type(log, OS_LOG_TYPE_ERROR, "failure");
}

TEST(LogTest, ACaptureTakesLinesFromItsLevelUp) {
    const os_log_t log = os_log_create("test.velto", "Levels");
    const bool wasEnabled = os_log_type_enabled(log, OS_LOG_TYPE_DEBUG);
    const auto linesFrom = [log](os_log_type_t level) {
        const LogCapture capture(level);
        logOneOfEachLevel(log);
        return capture.lines();
    };
    const auto routine = FieldsAre("Levels", OS_LOG_TYPE_DEBUG, "routine");
    const auto event = FieldsAre("Levels", OS_LOG_TYPE_DEFAULT, "{event} %s");
    const auto failure = FieldsAre("Levels", OS_LOG_TYPE_ERROR, "failure");
    EXPECT_THAT(linesFrom(OS_LOG_TYPE_ERROR), ElementsAre(failure));
    EXPECT_THAT(linesFrom(OS_LOG_TYPE_DEFAULT), ElementsAre(event, failure));
    EXPECT_THAT(linesFrom(OS_LOG_TYPE_DEBUG), ElementsAre(routine, event, failure));
    EXPECT_EQ(os_log_type_enabled(log, OS_LOG_TYPE_DEBUG), wasEnabled);
}

TEST(LogQueueTest, AFullQueueDropsItsOldestLinesAndCountsThem) {
    const auto queue = std::make_unique<LogQueue>();
    const auto text = std::make_unique<LogQueue::Text>();
    const auto taken = [&] {
        LogQueue::Line line{};
        return queue->take(line, *text) ? std::string(text->data(), line.length) + (line.isCut ? " (cut)" : "")
                                        : "none";
    };
    for (std::size_t i = 0; i < LogQueue::kMostLines + 3; ++i)
        queue->push(nullptr, OS_LOG_TYPE_DEBUG, std::to_string(i));
    EXPECT_EQ(queue->overrunCount(), 3U);
    EXPECT_EQ(taken(), "3");
    const std::string longest(LogQueue::kLongestText, 'x');
    for (int i = 0; i < 100; ++i) // more than once around its memory
        queue->push(nullptr, OS_LOG_TYPE_DEBUG, longest + 'y');
    queue->push(nullptr, OS_LOG_TYPE_DEBUG, "last");
    queue->push(nullptr, OS_LOG_TYPE_DEBUG, {});
    std::size_t keptCount = 2;
    for (; taken() == longest + " (cut)"; ++keptCount) {
    }
    EXPECT_EQ(std::string(text->data(), 4), "last");
    EXPECT_EQ(taken(), "");
    EXPECT_EQ(taken(), "none");
    EXPECT_EQ(queue->overrunCount() + 1 + keptCount, LogQueue::kMostLines + 3 + 102);
}

#if !VELTO_IS_SANITIZED
TEST(LogTest, ALogCallTakesNothingThatAnOrdinaryThreadMayHold) {
    const os_log_t log = os_log_create("test.velto", "RealTime");
    ASSERT_TRUE(os_log_type_enabled(log, OS_LOG_TYPE_ERROR));
    std::optional<LogCapture> ended(OS_LOG_TYPE_ERROR);
    ended.reset();
    const std::string longText(600, 'x');
    isWatched = true;
    os_log_with_type(log, OS_LOG_TYPE_ERROR, "short");
    os_log_with_type(log, OS_LOG_TYPE_ERROR, longText);
    isWatched = false;
    EXPECT_EQ(takenCount, 0);
}
#endif

// Each expectation runs in a new process, since the variable is read once.
class LogEnvironmentTest : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    void TearDown() override { unsetenv("VELTO_LOG"); }

    static void logAndExit() {
        logOneOfEachLevel(os_log_create("test.velto", "Child"));
        std::exit(0); // NOLINT(concurrency-mt-unsafe): the lines are written out on the way
    }
};

TEST_F(LogEnvironmentTest, StandardErrorShowsTheLevelAskedFor) {
    const auto routine = HasSubstr("[test.velto:Child] routine\n");
    const auto event = HasSubstr("[test.velto:Child] {event} %s\n");
    const auto failure = HasSubstr("[test.velto:Child] failure\n");
    setenv("VELTO_LOG", "debug", 1);
    EXPECT_EXIT(logAndExit(), ExitedWithCode(0), AllOf(routine, event, failure));
    setenv("VELTO_LOG", "default", 1);
    EXPECT_EXIT(logAndExit(), ExitedWithCode(0), AllOf(Not(routine), event, failure));
    setenv("VELTO_LOG", "off", 1);
    EXPECT_EXIT(logAndExit(), ExitedWithCode(0), Not(failure));
    unsetenv("VELTO_LOG");
    EXPECT_EXIT(logAndExit(), ExitedWithCode(0), AllOf(Not(event), failure));
}

TEST_F(LogEnvironmentTest, ThePlatformsOwnLinesHaveItsOwnIdentifier) {
    const auto scheduleADeviceThatCannotBeRead = [] {
        const auto backend = makeRef<TestDevice>();
        backend->failsToStart = true;
        const auto device = IOHIDDeviceCreate(nullptr, registerDevice(backend));
        IOHIDDeviceScheduleWithRunLoop(device.get(), CFRunLoopGetCurrent(), makeRef<String>("mode").get());
        std::exit(0); // NOLINT(concurrency-mt-unsafe)
    };
    EXPECT_EXIT(scheduleADeviceThatCannotBeRead(), ExitedWithCode(0),
                HasSubstr("[org.velto.platform:HIDDevice] device cannot be read"));
}

TEST_F(LogEnvironmentTest, AStalledStandardErrorStallsNobodyNorTheEndAndOverrunsAreCounted) {
    setenv("VELTO_LOG", "debug", 1);
    const auto logIntoAFullPipe = [] {
        constexpr unsigned kSecondsUntilKilled = 30;
        alarm(kSecondsUntilKilled);
        int ends[2]; // nobody reads the other end
        if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0)
            _exit(2);
        const os_log_t log = os_log_create("test.velto", "Child");
        for (int i = 0; i < 20'000; ++i)
            os_log_with_type(log, OS_LOG_TYPE_DEBUG, "many");
        const bool isCounted = os_log_overrun_count() > 0;
        std::exit(isCounted ? 0 : 1); // NOLINT(concurrency-mt-unsafe): waits for the lines, but not for ever
    };
    EXPECT_EXIT(logIntoAFullPipe(), ExitedWithCode(0), "");
}

} // namespace
} // namespace VeltoTouch::Tests
