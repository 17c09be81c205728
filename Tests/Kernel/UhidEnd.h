#pragma once

#include "Platform/Linux/FileDescriptor.h"

#include <functional>
#include <thread>

struct uhid_event;

namespace VeltoTouch::Tests {

// Our end of a HID device of the kernel (/dev/uhid). Throws std::system_error where the kernel does not take something.
class UhidEnd {
public:
    UhidEnd();
    UhidEnd(const UhidEnd&) = delete;
    UhidEnd& operator=(const UhidEnd&) = delete;
    // Unplugs it, and serves no longer.
    ~UhidEnd();

    // Any thread.
    void write(const uhid_event& event);
    // The same for an answer, which nobody may want any more. Any thread.
    void reply(const uhid_event& event) noexcept;

    // Hands on what the kernel says and asks, on a thread of its own, until the end. Once.
    void serve(std::function<void(const uhid_event& event)> handler);
    // Readable at the end.
    [[nodiscard]] int ending() const noexcept { return _ending.get(); }

    // The device has gone when this returns. Not while others write.
    void unplug();

private:
    void serveUntilTheEnd(const std::function<void(const uhid_event& event)>& handler);

    FileDescriptor _kernel;
    FileDescriptor _ending; // an eventfd
    bool _isPlugged = true;
    std::thread _server;
};

} // namespace VeltoTouch::Tests
