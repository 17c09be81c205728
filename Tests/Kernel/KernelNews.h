#pragma once

#include "Platform/Linux/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>

#include <linux/netlink.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace VeltoTouch::Tests {

// What the kernel tells of devices that come and go, from when this is made.
class KernelNews {
public:
    // Throws std::system_error.
    KernelNews() {
        const timeval patience{.tv_sec = 20, .tv_usec = 0};
        ::setsockopt(_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        sockaddr_nl address{};
        address.nl_family = AF_NETLINK;
        address.nl_groups = 1; // the kernel's own
        if (::bind(_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            throw std::system_error(errno, std::generic_category(), "news of devices");
    }

    // Waits until this happens to a device with a node whose path below /dev begins so; gives the whole path. Throws
    // std::system_error where that takes too long.
    [[nodiscard]] std::string waitFor(std::string_view action, std::string_view nodePrefix) {
        const auto isWanted = [nodePrefix](const std::string& node) { return node.starts_with(nodePrefix); };
        return "/dev/" + waitForMember(action, "DEVNAME", isWanted);
    }
    // The same for any device of a subsystem.
    void waitForSubsystem(std::string_view action, std::string_view subsystem) {
        waitForMember(action, "SUBSYSTEM", [subsystem](const std::string& name) { return name == subsystem; });
    }

private:
    // The member's value, once it is a wanted one.
    template <class IsWanted>
    std::string waitForMember(std::string_view action, std::string_view key, const IsWanted& isWanted) {
        std::array<char, 8192> news{};
        for (;;) {
            const ssize_t length = ::recv(_socket.get(), news.data(), news.size(), 0);
            if (length < 0)
                throw std::system_error(errno, std::generic_category(), "no news of a device");
            const std::string text(news.data(), static_cast<std::size_t>(length));
            const std::string value = member(text, key);
            if (member(text, "ACTION") == action && isWanted(value))
                return value;
        }
    }

    // KEY=VALUE, each between zeros.
    [[nodiscard]] static std::string member(const std::string& news, std::string_view key) {
        const std::string start = std::string(1, '\0') + std::string(key) + "=";
        const auto at = news.find(start);
        return at == std::string::npos ? "" : news.c_str() + at + start.size();
    }

    FileDescriptor _socket{::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_KOBJECT_UEVENT)};
};

} // namespace VeltoTouch::Tests
