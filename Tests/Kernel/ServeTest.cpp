#include "Tests/Kernel/KernelNews.h"
#include "Tests/Kernel/Touches.h"
#include "Tests/Kernel/VirtualSensor.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/Served.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/input.h>
#include <poll.h>
#include <sched.h>
#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

constexpr int kPatienceMs = 20'000;
constexpr const char* kGone = "gone";

using Steps = std::vector<std::string>;

// Reads a keyboard of the kernel. A device that goes takes with it what nobody has read yet, so that whoever wants to
// see the last keys has to be at it before the program goes on: the machine has one processor, and the reader is the
// most urgent thread on it while this lives.
class KeyReader {
public:
    explicit KeyReader(const std::string& node) : _node(::open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
        const sched_param priority{.sched_priority = 99};
        EXPECT_TRUE(_node.isOpen()) << node;
        EXPECT_EQ(::sched_setscheduler(0, SCHED_FIFO | SCHED_RESET_ON_FORK, &priority), 0);
    }
    KeyReader(const KeyReader&) = delete;
    KeyReader& operator=(const KeyReader&) = delete;
    ~KeyReader() {
        const sched_param priority{.sched_priority = 0};
        ::sched_setscheduler(0, SCHED_OTHER, &priority);
    }

    // The next so many presses ("+Up") and releases ("-Up"), or fewer where they do not come.
    [[nodiscard]] std::vector<std::string> next(std::size_t count) {
        std::vector<std::string> keys;
        while (keys.size() < count && (keys.empty() || keys.back() != kGone)) {
            pollfd ready{.fd = _node.get(), .events = POLLIN, .revents = 0};
            if (::poll(&ready, 1, kPatienceMs) != 1)
                break;
            input_event event{};
            if (::read(_node.get(), &event, sizeof event) != sizeof event)
                keys.emplace_back(kGone);
            else if (event.type == EV_KEY)
                keys.push_back(nameOf(event));
        }
        return keys;
    }

private:
    [[nodiscard]] static std::string nameOf(const input_event& event) {
        static const std::map<int, std::string> kNames{
            {KEY_PLAYPAUSE, "Play"}, {KEY_ASSISTANT, "Assistant"}, {KEY_VOLUMEUP, "Up"}, {KEY_VOLUMEDOWN, "Down"}};
        const auto known = kNames.find(event.code);
        return (event.value == 0 ? "-" : "+") + (known == kNames.end() ? std::to_string(event.code) : known->second);
    }

    FileDescriptor _node;
};

// A surface that the program serves, and the keyboard that comes of it.
class ServeTest : public testing::Test {
protected:
    PrivateBus bus;
    VirtualDevice surface;
    std::optional<Background> program;
    std::optional<KeyReader> keyboard;

    void SetUp() override {
        KernelNews news;
        program.emplace(velto().inBackground({"serve", "--device", surface.path()}));
        keyboard.emplace(news.waitFor("add", "input/event"));
        ASSERT_TRUE(surface.waitUntilOpened(kOpenedForReports));
    }

    void touch(std::span<const VirtualDevice::Report> reports) {
        ASSERT_LE(reports.size(), kKernelsRoom);
        for (const auto& report : reports)
            surface.send(report);
    }
    // A finger that stays.
    void holdVolumeUp() {
        auto reports = reportsOf({"hold:volume-up:1500"}, kAtALowRate);
        reports.resize(30);
        touch(reports);
        ASSERT_THAT(keyboard->next(1), ElementsAre("+Up"));
    }
};

TEST_F(ServeTest, TouchesBecomeKeys) {
    const std::pair<const char*, std::vector<std::string>> touches[]{
        {"tap:play-pause", {"+Play", "-Play"}},
        {"tap:volume-down", {"+Down", "-Down"}},
        {"tap:volume-up", {"+Up", "-Up"}},
        {"hold:play-pause", {"+Assistant", "-Assistant"}},
        {"slide:volume-up-volume-down:1500", {"+Up", "-Up", "+Down", "-Down"}},
    };
    Steps steps;
    std::size_t sent = 0;
    for (const auto& [step, keys] : touches) {
        steps.emplace_back(step);
        const auto reports = reportsOf(steps, kAtALowRate); // those of the steps before, and this one's
        touch(std::span(reports).subspan(sent));
        sent = reports.size();
        EXPECT_EQ(keyboard->next(keys.size()), keys) << step;
    }
    program->signal(SIGTERM);
    EXPECT_THAT(keyboard->next(1), ElementsAre(kGone)) << "and no other key before";
    EXPECT_EQ(program->waitForTheEnd(), 0);
}

TEST_F(ServeTest, UnpluggedDuringAHoldTheKeyIsReleasedAndTheProgramEnds) {
    holdVolumeUp();
    surface.unplug();
    EXPECT_THAT(keyboard->next(2), ElementsAre("-Up", kGone));
    EXPECT_EQ(program->waitForTheEnd(), 0);
}

TEST_F(ServeTest, SilentDuringAHoldTheKeyIsReleased) {
    holdVolumeUp();
    EXPECT_THAT(keyboard->next(1), ElementsAre("-Up"));
}

TEST_F(ServeTest, StoppedDuringAHoldTheKeyIsReleased) {
    holdVolumeUp();
    program->signal(SIGINT);
    EXPECT_THAT(keyboard->next(2), ElementsAre("-Up", kGone));
    EXPECT_EQ(program->waitForTheEnd(), 0);
}

TEST_F(ServeTest, KilledDuringAHoldTheKeyIsReleased) {
    holdVolumeUp();
    program->signal(SIGKILL);
    EXPECT_THAT(keyboard->next(2), ElementsAre("-Up", kGone));
    EXPECT_EQ(program->waitForTheEnd(), 128 + SIGKILL);
}

// With an accelerometer beside the surface.
class ServedRecordingTest : public ServeTest {
    VirtualSensor _sensor{{100, -200, 1000}};
};

TEST_F(ServedRecordingTest, FetchedFromTheRunningProgramItGivesTheSameGestures) {
    const TemporaryFolder folder;
    const std::string recording = folder.path("recording.json");
    const std::string watched = folder.path("watched");
    ASSERT_TRUE(eventually([&] { return velto().run({"get", "Version"}).status == 0; }));
    Background watcher = velto().writingTo(watched).inBackground({"watch", "--jsonl"});
    Steps steps;
    std::size_t sent = 0;
    const auto tapIsWatched = [&] { // taps before it watched are in the recording alone
        steps.insert(steps.end(), {"tap:play-pause", "idle:300"});
        const auto reports = reportsOf(steps, kAtALowRate);
        touch(std::span(reports).subspan(std::exchange(sent, reports.size())));
        EXPECT_THAT(keyboard->next(2), ElementsAre("+Play", "-Play"));
        return contentOf(watched).find("\"tap\"") != std::string::npos;
    };
    ASSERT_TRUE(eventually(tapIsWatched));
    EXPECT_THAT(velto().run({"record", "-o", recording}), Ends(0, ""));

    const auto gestures = gesturesIn(velto().run({"replay", "--jsonl", recording}).output);
    const auto seen = gesturesIn(contentOf(watched));
    EXPECT_EQ(gestures.size(), steps.size()) << "two a tap";
    ASSERT_LE(seen.size(), gestures.size());
    EXPECT_THAT(std::vector(gestures.end() - static_cast<std::ptrdiff_t>(seen.size()), gestures.end()),
                ElementsAreArray(seen));
    EXPECT_THAT(contentOf(recording), HasSubstr(R"("Accel")"));
    EXPECT_THAT(velto().run({"get", "Product"}), Ends(0, "\"Virtual Touch Surface\"\n"));
}

// As fast as a broken device might, and of every length.
TEST_F(ServeTest, GarbageDoesNoHarm) {
    constexpr std::chrono::milliseconds kDuration{5000};
    constexpr std::size_t kReportsPerMillisecond = 8;
    const std::size_t before = residentKilobytes(program->process());
    std::minstd_rand random(1);
    std::vector<std::uint8_t> garbage(4096);
    std::ranges::generate(garbage, [&] { return static_cast<std::uint8_t>(random()); });
    const auto start = std::chrono::steady_clock::now();
    std::size_t sent = 0;
    for (auto elapsed = 0ms; elapsed < kDuration;
         elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)) {
        for (; sent < kReportsPerMillisecond * static_cast<std::size_t>(elapsed.count()); ++sent) {
            const std::size_t length = sent % 3 == 0 ? random() % garbage.size() : random() % 64;
            garbage.front() = static_cast<std::uint8_t>(random() % 4); // the report IDs, and two that are none
            surface.send(std::span(garbage).first(length));
        }
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_GT(sent, 10'000U) << "of 40000";
    EXPECT_LT(residentKilobytes(program->process()), before + 50'000U);

    touch(reportsOf({"idle:300", "tap:play-pause", "idle:300"}, kAtALowRate));
    EXPECT_THAT(keyboard->next(2), ElementsAre("+Play", "-Play")) << "and no key before";
    program->signal(SIGTERM);
    EXPECT_EQ(program->waitForTheEnd(), 0);
}

} // namespace
} // namespace VeltoTouch::Tests
