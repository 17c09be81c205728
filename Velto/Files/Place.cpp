#include "Velto/Files/Place.h"

#include "Velto/Files/SystemCalls.h"

#include <array>
#include <climits>
#include <stdexcept>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace VeltoTouch::Files {
namespace {

constexpr int kMostLinks = 40; // the kernel's own bound

// The place that a path names, relative to the folder; the last part is not followed.
Place placeNamed(int folder, const std::string& path) {
    const auto slash = path.rfind('/');
    Place place;
    place.folder = opened(::openat(folder, slash == std::string::npos ? "." : path.substr(0, slash + 1).c_str(),
                                   O_PATH | O_DIRECTORY | O_CLOEXEC));
    const std::string name = path.substr(slash + 1); // all of it without a slash
    place.name = name.empty() ? "." : name;
    struct stat status {};
    if (::fstatat(place.folder.get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        place.status = status;
    else if (errno != ENOENT)
        throwSystemError();
    return place;
}

bool isBelowProc(const Place& place) {
    struct statfs fileSystem {};
    check(::fstatfs(place.folder.get(), &fileSystem));
    return fileSystem.f_type == PROC_SUPER_MAGIC;
}

// As the kernel may do where it protects links, and in folders of a group too: a link is trusted that is the user's own
// or the folder's owner's.
void requireTrustedLink(const Place& place) {
    const uid_t owner = place.status->st_uid;
    const struct stat folder = statusOf(place.folder.get());
    const bool othersMayWrite = (folder.st_mode & (S_IWGRP | S_IWOTH | S_ISVTX)) != 0;
    if (othersMayWrite && owner != ::geteuid() && owner != folder.st_uid)
        throw std::runtime_error("a link of another user, in a folder where others may write");
}

std::string targetOf(const Place& place) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlinkat(place.folder.get(), place.name.c_str(), target.data(), target.size());
    if (length < 0)
        throwSystemError();
    return {target.data(), static_cast<std::size_t>(length)};
}

} // namespace

bool Place::isShared() const { return (statusOf(folder.get()).st_mode & (S_IWOTH | S_ISVTX)) != 0; }

Place Place::at(const std::string& path) {
    Place place = placeNamed(AT_FDCWD, path);
    for (int links = 0; place.status && S_ISLNK(place.status->st_mode) && !isBelowProc(place); ++links) {
        if (links == kMostLinks)
            throw std::system_error(ELOOP, std::generic_category());
        requireTrustedLink(place);
        place = placeNamed(place.folder.get(), targetOf(place));
        if (!place.status)
            throw std::system_error(ENOENT, std::generic_category());
    }
    return place;
}

} // namespace VeltoTouch::Files
