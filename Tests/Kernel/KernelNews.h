#pragma once

#include "Platform/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>

#include <linux/netlink.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace VeltoTouch::Tests {

// The kernel's notices of devices that come and go, from when this is made. Throws std::system_error.
class KernelNews {
public:
    KernelNews() {
        const timeval patience{.tv_sec = 20, .tv_usec = 0};
        ::setsockopt(_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        sockaddr_nl address{};
        address.nl_family = AF_NETLINK;
        address.nl_groups = 1; // the kernel's own
        if (::bind(_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            throw std::system_error(errno, std::generic_category(), "news of devices");
    }

    // Waits for a notice of this action with KEY=PREFIX...; returns the value of the key.
    std::string waitFor(std::string_view action, std::string_view key, std::string_view prefix) {
        std::array<char, 8192> news{};
        for (;;) {
            const ssize_t length = ::recv(_socket.get(), news.data(), news.size(), 0);
            if (length < 0)
                throw std::system_error(errno, std::generic_category(), "no news of a device");
            const std::string text(news.data(), static_cast<std::size_t>(length));
            std::string value = member(text, key);
            if (member(text, "ACTION") == action && value.starts_with(prefix))
                return value;
        }
    }
    // The same for a device whose node below /dev begins so; returns the whole path.
    [[nodiscard]] std::string waitForNode(std::string_view prefix) {
        return "/dev/" + waitFor("add", "DEVNAME", prefix);
    }

private:
    // KEY=VALUE, each between zeros.
    [[nodiscard]] static std::string member(const std::string& news, std::string_view key) {
        const std::string start = std::string(1, '\0') + std::string(key) + "=";
        const auto at = news.find(start);
        return at == std::string::npos ? "" : news.c_str() + at + start.size();
    }

    FileDescriptor _socket{::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_KOBJECT_UEVENT)};
};

} // namespace VeltoTouch::Tests
