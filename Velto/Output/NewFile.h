#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/SignalMask.h"

#include <optional>
#include <string>

namespace VeltoTouch::Velto {

// A file in the making, for its owner alone. Where the file system can, it has no name before it is whole; elsewhere
// it has a temporary one. Signals wait while there is a temporary name, and none stays behind: no other thread of the
// program takes any. `folder` must outlive the file.
class NewFile {
public:
    // Throws std::system_error.
    explicit NewFile(const FileDescriptor& folder);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    [[nodiscard]] int descriptor() const noexcept { return _file.get(); }

    // Gives it this name in the folder, in place of what has the name. Throws std::system_error.
    void moveTo(const std::string& name);

private:
    const int _folder;
    std::optional<SignalMask> _heldSignals; // let go last
    std::string _temporaryName;             // empty: none
    FileDescriptor _file;
};

} // namespace VeltoTouch::Velto
