#include "Platform/Testing/LogCapture.h"
#include "Tests/Support/Eventually.h"
#include "Tests/Support/TestHost.h"

#include <filesystem>
#include <fstream>
#include <optional>

#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

class ThreadsTest : public testing::Test {
protected:
    const Ref<TestDevice> device = makeRef<TestDevice>();
};

// The signals that a thread blocks, a bit each; none for a thread that has ended.
std::optional<std::uint64_t> blockedSignals(const std::filesystem::path& thread) {
    std::ifstream status(thread / "status");
    for (std::string word; status >> word;) {
        if (std::uint64_t blocked = 0; word == "SigBlk:" && status >> std::hex >> blocked)
            return blocked;
    }
    return std::nullopt;
}

TEST_F(ThreadsTest, TheHostsSignalsRunOnNoThreadOfOurs) {
    constexpr std::uint64_t kFaults = 0x4D8;         // ILL, TRAP, BUS, FPE, SEGV; a sanitizer's own thread takes SYS
    constexpr std::uint64_t kBlockable = 0x3FFBFA27; // 1 to 30 but those, KILL and STOP
    const auto before = blockedSignals("/proc/thread-self");
    TestHost host(device);
    host.schedule();
    EXPECT_EQ(blockedSignals("/proc/thread-self"), before);
    int count = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        if (thread.path().filename() == std::to_string(getpid()))
            continue;
        const auto blocked = blockedSignals(thread.path());
        if (!blocked)
            continue;
        ++count;
        EXPECT_EQ(*blocked & kBlockable, kBlockable);
        const auto takesFaults = [&thread] { // not while it is being made
            const auto now = blockedSignals(thread.path());
            return !now || (*now & kFaults) == 0;
        };
        if (!VELTO_IS_SANITIZED) { // a sanitizer's own thread blocks them
            EXPECT_TRUE(eventually(takesFaults)) << "a fault reaches the host's handler";
        }
    }
    EXPECT_GE(count, 3) << "reports, queue, log";
}

// In a process of its own: a handler that was set first runs last, when every static object has gone.
TEST_F(ThreadsTest, ThreadsMayUseTheServiceWhileTheProcessEnds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    static TestHost* host;
    const auto useAndExit = [this] {
        std::atexit([] { _exit(3); });
        const auto use = [] {
            host->set("Pipeline.Algs.HoldTimeoutMilliseconds", makeRef<String>("no number"));
            const LogCapture log(OS_LOG_TYPE_DEBUG);
            std::ignore = os_log_create("test", "End");
        };
        std::atexit(use);
        host = new TestHost(device);
        use();
        std::exit(0); // NOLINT(concurrency-mt-unsafe)
    };
    EXPECT_EXIT(useAndExit(), testing::ExitedWithCode(3), "");
}

} // namespace
} // namespace VeltoTouch::Tests
