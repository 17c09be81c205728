#pragma once

#include "Tests/Kernel/Touches.h"
#include "Tests/Support/Eventually.h"

#include <cstdio>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <sys/wait.h>

// The running system, which these tests have to themselves.

namespace VeltoTouch::Tests {

// What a command of the shell came to.
struct Outcome {
    int status = -1;
    std::string output; // errors too; without the last newline
};

inline Outcome shell(const std::string& command) {
    Outcome outcome;
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return outcome;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        outcome.output += static_cast<char>(c);
    if (outcome.output.ends_with('\n'))
        outcome.output.pop_back();
    const int status = ::pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

// A surface that is plugged in, and the service that the system gives it.
class ServedSurface {
public:
    ~ServedSurface() {
        if (testing::Test::HasFailure())
            std::puts(shell("systemctl status --no-pager --lines=20 " + unit()).output.c_str());
        unplug();
    }

    [[nodiscard]] const std::string& node() const { return _device.path(); }
    // As the bus calls it: hidraw0.
    [[nodiscard]] std::string name() const { return std::filesystem::path(node()).filename(); }
    [[nodiscard]] std::string unit() const { return "velto-touch@" + name() + ".service"; }
    [[nodiscard]] std::string property(const std::string& key) const {
        return shell("systemctl show --property " + key + " --value " + unit()).output;
    }

    // Asks seldom: each time starts a process, which holds up what is waited for.
    [[nodiscard]] bool waitUntilState(const std::string& state) const {
        return eventually([&] { return property("ActiveState") == state; }, std::chrono::milliseconds(300));
    }
    // Whether the service is up and reads the surface, now that it has done so so many times.
    [[nodiscard]] bool waitUntilServed(int times = 1) {
        return _device.waitUntilOpened(kOpenedForReports * times) && waitUntilState("active");
    }
    void play(const std::string& step) {
        for (const auto& report : reportsOf({step}, kAtALowRate))
            _device.send(report);
    }
    void unplug() { _device.unplug(); }

private:
    VirtualDevice _device;
};

} // namespace VeltoTouch::Tests
