#include "Tests/Kernel/Touches.h"
#include "Tests/Support/Eventually.h"
#include "Tests/Support/Program.h"

#include <filesystem>
#include <functional>
#include <thread>

#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;

// Sends the beginning of a hold as soon as the program reads the surface, and does something then.
class InAHold {
public:
    explicit InAHold(const std::function<void(VirtualDevice& surface)>& then) {
        auto reports = reportsOf({"hold:volume-up"});
        reports.resize(kKernelsRoom);
        _finger = std::thread([this, reports, then] {
            if (surface.waitUntilOpened(kOpenedForReports))
                std::ranges::for_each(reports, [&](const auto& report) { surface.send(report); });
            then(surface);
        });
    }
    InAHold(const InAHold&) = delete;
    InAHold& operator=(const InAHold&) = delete;
    ~InAHold() { _finger.join(); }

    VirtualDevice surface;

private:
    std::thread _finger;
};

TEST(BenchTest, ACaptureOfAnUnpluggedSurfaceEndsWithItsLastReport) {
    const TemporaryFolder folder;
    const std::string file = folder.path("capture.json");
    const InAHold hold([&file](VirtualDevice& surface) {
        std::ignore = eventually([&file] { return std::filesystem::exists(file); }); // it has begun
        surface.unplug();
    });
    EXPECT_THAT(velto().run({"capture", hold.surface.path(), "-o", file}),
                Ends(0, HasSubstr("reports            " + std::to_string(kKernelsRoom) + " ")));
    EXPECT_THAT(velto().run({"explain", file}).output, AllOf(HasSubstr("touch 1 "), HasSubstr(" VolumeUp ")));
}

// A terminal of its own, and what the program has written there.
class Terminal {
public:
    Terminal() {
        ::mkdir("/dev/pts", 0755);
        ::mount("devpts", "/dev/pts", "devpts", 0, "ptmxmode=0666");
        _ours = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (_ours < 0 || ::grantpt(_ours) != 0 || ::unlockpt(_ours) != 0)
            throw std::runtime_error("no terminal");
        const winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
        ::ioctl(_ours, TIOCSWINSZ, &size);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() { ::close(_ours); }

    [[nodiscard]] std::string path() const { return ::ptsname(_ours); }
    void type(char key) const { std::ignore = ::write(_ours, &key, 1); }
    // Reads until the text has come, or the program has ended.
    [[nodiscard]] std::string until(const std::string& text) const {
        std::string shown;
        char bytes[4096];
        for (ssize_t count = 0;
             shown.find(text) == std::string::npos && (count = ::read(_ours, bytes, sizeof bytes)) > 0;)
            shown.append(bytes, static_cast<std::size_t>(count));
        return shown;
    }

private:
    int _ours;
};

TEST(BenchTest, AViewOfAnUnpluggedSurfaceStaysUntilItIsClosed) {
    const Terminal terminal;
    const InAHold hold([&terminal](VirtualDevice& surface) {
        std::ignore = terminal.until("touch 1");
        surface.unplug();
        EXPECT_THAT(terminal.until("the surface has gone"), HasSubstr("the surface has gone"));
        terminal.type('q');
        std::ignore = terminal.until("(never)"); // so that the program can write its last
    });
    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        const int end = ::open(terminal.path().c_str(), O_RDWR);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::dup2(end, standard);
        ::setenv("TERM", "linux", 1);
        ::execl(VELTO_PROGRAM, "velto", "view", hold.surface.path().c_str(), nullptr);
        ::_exit(127);
    }
    Background view(child);
    EXPECT_EQ(view.waitForTheEnd(), 0);
}

} // namespace
} // namespace VeltoTouch::Tests
