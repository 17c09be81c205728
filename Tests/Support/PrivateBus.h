#pragma once

#include "Tests/Support/Program.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VeltoTouch::Tests {

// A message bus of a test's own, which this process and those it starts take for the system's. Everybody may do
// everything on it.
class PrivateBus {
public:
    PrivateBus() {
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + _folder.path("bus")).c_str(), 1);
        start();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus() {
        stop();
        ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    }

    // It can be connected to when this returns.
    void start() {
        int ends[2];
        if (::pipe(ends) != 0 || (_daemon = ::fork()) < 0)
            throw std::runtime_error("no process");
        if (_daemon == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            ::dup2(::open("/dev/null", O_WRONLY), STDERR_FILENO); // where it may not have many files, it says so
            ::execlp("dbus-daemon", "dbus-daemon", "--nofork", "--print-address=1",
                     ("--config-file=" + _configuration).c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        std::array<char, 256> address{};
        const ssize_t length = ::read(ends[0], address.data(), address.size());
        ::close(ends[0]);
        if (length <= 0)
            throw std::runtime_error("dbus-daemon cannot be started");
    }
    // A bus that is not killed says good-bye.
    void stop(int signal = SIGTERM) {
        if (_daemon < 0)
            return;
        ::kill(_daemon, signal);
        ::waitpid(std::exchange(_daemon, -1), nullptr, 0);
        ::unlink(_folder.path("bus").c_str());
    }

    // Until then it takes nothing from anybody.
    void pause() const { ::kill(_daemon, SIGSTOP); }
    void goOn() const { ::kill(_daemon, SIGCONT); }

private:
    const TemporaryFolder _folder;
    const std::string _configuration = _folder.write("bus.conf", R"(<busconfig>
  <type>custom</type>
  <listen>unix:path=)" + _folder.path("bus") + R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default"><allow user="*"/><allow own="*"/><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/></policy>
  <limit name="max_replies_per_connection">10000</limit>
</busconfig>)");
    pid_t _daemon = -1;
};

} // namespace VeltoTouch::Tests
