#pragma once

#include "Platform/FileDescriptor.h"

#include <optional>
#include <string>

#include <sys/stat.h>

namespace VeltoTouch::Velto {

// Where a path leads: a name in an open folder, which stays the same folder whatever becomes of the path.
struct Place {
    // Follows links up to one that stands for an open descriptor. Throws std::system_error, also for a link to nothing,
    // and std::runtime_error for another user's link in a folder where others, or a group,
    // may write.
    [[nodiscard]] static Place at(const std::string& path);

    FileDescriptor folder; // for calls that take a folder's descriptor; it can be neither read nor synced itself
    std::string name;
    std::optional<struct stat> status; // of what has the name; none if nothing has

    // Whether anybody may put files there, whose owners are then not to be trusted.
    [[nodiscard]] bool isShared() const;
    // Whether the name is a link below /proc that stands for an open descriptor, as /dev/stdout does.
    [[nodiscard]] bool isOpenDescriptor() const noexcept { return status && S_ISLNK(status->st_mode); }
    // Whether a file is to stand there: a regular one, or none yet.
    [[nodiscard]] bool isForFile() const noexcept { return !status || S_ISREG(status->st_mode); }
};

} // namespace VeltoTouch::Velto
