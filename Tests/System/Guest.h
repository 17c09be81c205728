#pragma once

#include "Surface/Scripts.h"
#include "Surface/Simulation.h"
#include "Tests/Kernel/VirtualDevice.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

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

// Whether it comes true before long.
template <class Condition>
[[nodiscard]] bool eventually(const Condition& condition) {
    using namespace std::chrono_literals;
    for (const auto end = std::chrono::steady_clock::now() + 30s; std::chrono::steady_clock::now() < end;) {
        if (condition())
            return true;
        std::this_thread::sleep_for(50ms);
    }
    return false;
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

    // Whether the service is up and reads the surface, now that it has done so so many times.
    [[nodiscard]] bool waitUntilServed(int times = 1) {
        // It opens the device once before, to ask what it is.
        return _device.waitUntilOpened(2 * times) && eventually([this] { return property("ActiveState") == "active"; });
    }
    void tapPlayPause() {
        // At a low rate the kernel has room for all of it.
        Surface::Simulation simulation({.rateHz = 30}, Surface::scriptOf({Surface::parseStep("tap:play-pause")}));
        while (const auto report = simulation.next())
            _device.send(report->bytes());
    }
    void unplug() { _device.unplug(); }

private:
    VirtualDevice _device;
};

} // namespace VeltoTouch::Tests
