#include "Tests/Kernel/UhidEnd.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <linux/uhid.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

constexpr const char* kNode = "/dev/uhid";

FileDescriptor checked(int descriptor) {
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), kNode);
    return FileDescriptor(descriptor);
}

} // namespace

UhidEnd::UhidEnd() : _kernel(checked(::open(kNode, O_RDWR | O_CLOEXEC))), _ending(checked(::eventfd(0, EFD_CLOEXEC))) {}

UhidEnd::~UhidEnd() {
    unplug();
    const std::uint64_t signal = 1;
    (void)!::write(_ending.get(), &signal, sizeof signal);
    if (_server.joinable())
        _server.join();
}

void UhidEnd::write(const uhid_event& event) {
    if (::write(_kernel.get(), &event, sizeof event) < 0)
        throw std::system_error(errno, std::generic_category(), kNode);
}

void UhidEnd::reply(const uhid_event& event) noexcept { (void)!::write(_kernel.get(), &event, sizeof event); }

void UhidEnd::serve(std::function<void(const uhid_event&)> handler) {
    _server = std::thread([this, handler = std::move(handler)] { serveUntilTheEnd(handler); });
}

void UhidEnd::serveUntilTheEnd(const std::function<void(const uhid_event&)>& handler) {
    std::array<pollfd, 2> ready{pollfd{.fd = _kernel.get(), .events = POLLIN, .revents = 0},
                                pollfd{.fd = _ending.get(), .events = POLLIN, .revents = 0}};
    while (::poll(ready.data(), ready.size(), -1) >= 0 && ready[1].revents == 0) {
        uhid_event event{};
        if (::read(_kernel.get(), &event, sizeof event) <= 0)
            return;
        handler(event);
    }
}

void UhidEnd::unplug() {
    if (!std::exchange(_isPlugged, false))
        return;
    uhid_event event{};
    event.type = UHID_DESTROY;
    write(event);
}

} // namespace VeltoTouch::Tests
