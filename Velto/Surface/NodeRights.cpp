#include "Velto/Surface/NodeRights.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VeltoTouch::Surface {
namespace {

constexpr const char* kGroup = "velto";

std::string groupOf(const struct stat& status) {
    const group* const found = ::getgrgid(status.st_gid);
    return found == nullptr ? std::to_string(status.st_gid) : found->gr_name;
}

std::string nameOfUser(uid_t number) {
    const passwd* const found = ::getpwuid(number);
    return found == nullptr ? std::to_string(number) : found->pw_name;
}

// Whether the user's entry has the group; this process may have been started before.
bool isMember(gid_t group) {
    const passwd* const user = ::getpwuid(::geteuid());
    if (user == nullptr)
        return false;
    int count = 0;
    ::getgrouplist(user->pw_name, user->pw_gid, nullptr, &count);
    std::vector<gid_t> groups(static_cast<std::size_t>(count));
    ::getgrouplist(user->pw_name, user->pw_gid, groups.data(), &count);
    return std::ranges::find(groups, group) != groups.end();
}

std::string howToGetTheRight(const std::string& node, const struct stat& status) {
    if (::faccessat(AT_FDCWD, node.c_str(), R_OK | W_OK, AT_EACCESS) == 0 || errno == EPERM)
        return "this container or unit forbids it: allow the device there";
    if (groupOf(status) == kGroup)
        return howToJoin();
    if (::getgrnam(kGroup) == nullptr)
        return "run as root; with the package velto-touch installed, the node belongs to the group velto";
    return "udev has not given it to the group velto: sudo udevadm trigger --subsystem-match=hidraw, or run as root";
}

} // namespace

MissingRight missingRight(const std::string& node) {
    struct stat status {};
    if (::stat(node.c_str(), &status) != 0)
        throw std::system_error(errno, std::generic_category());
    return {.text = fmt::format("no right to open {} ({}:{} {:04o})", node, nameOfUser(status.st_uid), groupOf(status),
                                status.st_mode & 07777U),
            .advice = howToGetTheRight(node, status)};
}

void throwMissingRight(const std::string& node) {
    const auto [text, advice] = missingRight(node);
    throw std::runtime_error(fmt::format("{}: {}", text, advice));
}

std::string howToJoin() {
    const group* const found = ::getgrnam(kGroup);
    if (found != nullptr && isMember(found->gr_gid))
        return "you have joined the group velto since you logged in: log in again";
    return fmt::format("join the group velto (sudo adduser {} velto, then log in again) or run as root",
                       nameOfUser(::geteuid()));
}

} // namespace VeltoTouch::Surface
