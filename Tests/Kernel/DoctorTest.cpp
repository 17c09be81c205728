#include "Tests/Kernel/KeyReader.h"
#include "Tests/Kernel/Touches.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Program.h"

#include <chrono>
#include <filesystem>
#include <thread>

#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;
using testing::_;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;

constexpr uid_t kNobody = 65534;

// A finger that does the same again and again, at the surface's own pace, until this goes.
class Finger {
public:
    Finger(VirtualDevice& surface, const std::vector<std::string>& steps) {
        if (steps.empty())
            return;
        std::vector<std::string> all;
        for (int i = 0; i < 30; ++i)
            all.insert(all.end(), steps.begin(), steps.end());
        _hand = std::jthread([&surface, reports = reportsOf(all, kAtALowRate)](const std::stop_token& stop) {
            for (auto report = reports.begin(); report != reports.end() && !stop.stop_requested(); ++report) {
                surface.send(*report);
                std::this_thread::sleep_for(33ms);
            }
        });
    }

private:
    std::jthread _hand;
};

TEST(DoctorTest, WithoutAServiceItSaysWhatIsMissing) {
    const PrivateBus bus;
    EXPECT_THAT(velto().run({"doctor"}), Ends(1, HasSubstr("no surface is plugged in")));
    const VirtualDevice surface;
    Program nobodys = velto(); // makes a file, which nobody may not
    ASSERT_EQ(::setresuid(kNobody, kNobody, 0), 0);
    EXPECT_THAT(nobodys.run({"doctor"}),
                Ends(1, AllOf(HasSubstr("no right to open " + surface.path() + " (root:"), HasSubstr("run as root"))));
    EXPECT_THAT(nobodys.run({"dump", "surface"}),
                Ends(1, "", HasSubstr("velto: surface: no right to open " + surface.path() + " (root:")));
    ASSERT_EQ(::setresuid(0, 0, 0), 0);
    EXPECT_THAT(velto().run({"doctor", "--device", surface.path()}),
                Ends(1, AllOf(HasSubstr("Virtual Touch Surface, K-1, Virtual, may be opened\nNO"),
                              HasSubstr("no service runs for " + surface.path() + "\n"),
                              HasSubstr("  sudo velto serve --device " + surface.path() + "\n"))));
    std::filesystem::rename("/dev/uinput", "/dev/elsewhere");
    EXPECT_THAT(velto().run({"doctor"}), Ends(1, AllOf(HasSubstr(", and /dev/uinput is not there\n"),
                                                       HasSubstr("  sudo modprobe uinput && sudo velto serve"))));
    std::filesystem::rename("/dev/elsewhere", "/dev/uinput");
}

TEST(DoctorTest, WithAServiceItFollowsATouchToItsKey) {
    struct Row {
        const char* name;
        std::vector<std::string> steps;
        bool hasReader;
        int status;
        testing::Matcher<std::string> page;
    };
    const std::string upToTheKey = "surface   /dev/hidraw[0-9]+, .*, may be opened\nservice   version 19.0.0 since "
                                   ".*\nreports   [1-9][0-9]* a second\ngestures  a touch turned on, tap PlayPause\n"
                                   "keys      /dev/input/event[0-9]+, keys pressed: [1-9]";
    const Row rows[]{
        {"silent", {}, false, 1, HasSubstr("no reports come (0 since the start)")},
        {"weak",
         {"brush:volume-up", "idle:600"},
         false,
         1,
         ContainsRegex("[1-9] contacts? in 5 s stayed below the "
                       "activation threshold: 1[0-9]+ of 200")},
        {"unread",
         {"tap:play-pause", "idle:600"},
         false,
         1,
         MatchesRegex(upToTheKey + "\nNO  .*nobody reads /dev/in.*")},
        {"well",
         {"tap:play-pause", "idle:600"},
         true,
         0,
         MatchesRegex(upToTheKey + ", read by kernel_tests .[0-9]+.\n")},
    };
    const PrivateBus bus;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        VirtualDevice surface;
        KernelNews news;
        Background program = velto().inBackground({"serve", "--device", surface.path()});
        const std::string keyboard = news.waitForNode("input/event");
        std::optional<KeyReader> reader;
        if (row.hasReader)
            reader.emplace(keyboard);
        ASSERT_TRUE(surface.waitUntilOpened(kOpenedForReports));
        ASSERT_TRUE(eventually([] { return velto().run({"get", "Version"}).status == 0; }));
        const Finger finger(surface, row.steps);
        EXPECT_THAT(velto().run({"doctor", "--wait", "5"}), Ends(row.status, row.page, _));
    }
}

} // namespace
} // namespace VeltoTouch::Tests
