#pragma once

#include "Platform/FileDescriptor.h"

#include <map>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/input.h>
#include <poll.h>
#include <sched.h>
#include <unistd.h>

namespace VeltoTouch::Tests {

// Reads a keyboard of the kernel. A device that goes takes with it what nobody has read yet, so that whoever wants to
// see the last keys has to be at it before the program goes on: the machine has one processor, and the reader is the
// most urgent thread on it while this lives.
class KeyReader {
public:
    static constexpr const char* kGone = "gone";

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
        pollfd ready{.fd = _node.get(), .events = POLLIN, .revents = 0};
        while (keys.size() < count && (keys.empty() || keys.back() != kGone) && ::poll(&ready, 1, 20'000) == 1) {
            input_event event{};
            if (::read(_node.get(), &event, sizeof event) != sizeof event)
                keys.emplace_back(kGone);
            else if (event.type == EV_KEY)
                keys.push_back((event.value == 0 ? "-" : "+") + nameOf(event.code));
        }
        return keys;
    }

private:
    [[nodiscard]] static std::string nameOf(int key) {
        static const std::map<int, std::string> kNames{{KEY_PLAYPAUSE, "Play"}, {KEY_ASSISTANT, "Assistant"},
                                                       {KEY_VOLUMEUP, "Up"},    {KEY_VOLUMEDOWN, "Down"},
                                                       {KEY_MUTE, "Mute"},      {KEY_NEXTSONG, "Next"}};
        const auto known = kNames.find(key);
        return known == kNames.end() ? std::to_string(key) : known->second;
    }

    FileDescriptor _node;
};

} // namespace VeltoTouch::Tests
