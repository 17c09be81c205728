#include "Tests/Kernel/KeyReader.h"
#include "Tests/Kernel/Touches.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Program.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

// A surface that the program serves, and the keyboard that comes of it.
class ServeTest : public testing::Test {
protected:
    PrivateBus bus;
    std::optional<VirtualDevice> surface;
    std::optional<Background> program;
    std::optional<KeyReader> keyboard;

    void SetUp() override { serve(); }
    void serve() {
        keyboard.reset();
        surface.reset();
        surface.emplace();
        KernelNews news;
        program.emplace(velto().inBackground({"serve", "--device", surface->path()}));
        keyboard.emplace(news.waitForNode("input/event"));
        ASSERT_TRUE(surface->waitUntilOpened(kOpenedForReports));
    }
    void touch(std::span<const VirtualDevice::Report> reports) {
        ASSERT_LE(reports.size(), kKernelsRoom);
        for (const auto& report : reports)
            surface->send(report);
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
    std::vector<std::string> steps;
    std::size_t sent = 0;
    for (const auto& [step, keys] : touches) {
        steps.emplace_back(step);
        const auto reports = reportsOf(steps, kAtALowRate); // those of the steps before, and this one's
        touch(std::span(reports).subspan(sent));
        sent = reports.size();
        EXPECT_EQ(keyboard->next(keys.size()), keys) << step;
    }
    program->signal(SIGTERM);
    EXPECT_THAT(keyboard->next(1), ElementsAre(KeyReader::kGone)) << "and no other key before";
    EXPECT_EQ(program->waitForTheEnd(), 0);
}

TEST_F(ServeTest, AHoldThatIsCutOffReleasesItsKey) {
    struct Row {
        const char* name;
        std::function<void()> cutOff;
        int status;
    };
    const Row rows[]{
        {"unplugged", [&] { surface->unplug(); }, 0},
        {"stopped", [&] { program->signal(SIGINT); }, 0},
        {"killed", [&] { program->signal(SIGKILL); }, 128 + SIGKILL},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        holdVolumeUp();
        row.cutOff();
        EXPECT_THAT(keyboard->next(2), ElementsAre("-Up", KeyReader::kGone));
        EXPECT_EQ(program->waitForTheEnd(), row.status);
        serve();
    }
    holdVolumeUp();
    EXPECT_THAT(keyboard->next(1), ElementsAre("-Up")) << "the surface is silent";
}

// As fast as a broken device might, and of every length.
TEST_F(ServeTest, GarbageDoesNoHarm) {
    const std::size_t before = program->residentKilobytes();
    std::minstd_rand random(1);
    std::vector<std::uint8_t> garbage(4096);
    std::ranges::generate(garbage, [&] { return static_cast<std::uint8_t>(random()); });
    for (int sent = 0; sent < 20'000; ++sent) {
        const std::size_t length = sent % 3 == 0 ? random() % garbage.size() : random() % 64;
        garbage.front() = static_cast<std::uint8_t>(random() % 4); // the report IDs, and two that are none
        surface->send(std::span(garbage).first(length));
        if (sent % 8 == 0)
            std::this_thread::sleep_for(1ms);
    }
    std::this_thread::sleep_for(2s); // until it has read what the kernel kept
    EXPECT_LT(program->residentKilobytes(), before + 50'000U);

    touch(reportsOf({"idle:300", "tap:play-pause", "idle:300"}, kAtALowRate));
    EXPECT_THAT(keyboard->next(2), ElementsAre("+Play", "-Play")) << "and no key before";
    program->signal(SIGTERM);
    EXPECT_EQ(program->waitForTheEnd(), 0);
}

} // namespace
} // namespace VeltoTouch::Tests
