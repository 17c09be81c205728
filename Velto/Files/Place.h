#pragma once

#include "Platform/FileDescriptor.h"

#include <optional>
#include <string>

#include <sys/stat.h>

namespace VeltoTouch::Files {

// The target of a path: a name in an open folder, which stays the same folder even if the path changes.
struct Place {
    // Follows links up to one that stands for an open descriptor. Throws std::system_error, also for a dangling link,
    // and std::runtime_error for another user's link in a folder where others, or a group, may write.
    [[nodiscard]] static Place at(const std::string& path);

    FileDescriptor folder; // for calls that take a folder's descriptor; it can be neither read nor synced itself
    std::string name;
    std::optional<struct stat> status; // of what has the name; none if nothing has

    // Returns whether others may put files there, whose owners cannot be trusted.
    [[nodiscard]] bool isShared() const;
    // Returns whether the name is a link below /proc that stands for an open descriptor, as /dev/stdout does.
    [[nodiscard]] bool isOpenDescriptor() const noexcept { return status && S_ISLNK(status->st_mode); }
    // Returns whether the target is a regular file, or none yet.
    [[nodiscard]] bool isForFile() const noexcept { return !status || S_ISREG(status->st_mode); }
};

} // namespace VeltoTouch::Files
