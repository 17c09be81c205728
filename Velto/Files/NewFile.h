#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/SignalMask.h"

#include <optional>
#include <string>
#include <utility>

namespace VeltoTouch::Files {

// A file being written, accessible to its owner alone. It has no name before it is whole, or a temporary one if the
// file system does not support that. While there is a temporary name, signals are blocked in the thread that writes, so
// that none is left behind where no other thread takes them. `folder` must outlive the file.
class NewFile {
public:
    // Throws std::system_error.
    explicit NewFile(const FileDescriptor& folder);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    [[nodiscard]] int descriptor() const noexcept { return _file.get(); }

    // Gives the file this name in the folder, replacing what has the name. Throws std::system_error.
    void moveTo(const std::string& name);

    // The same for a name that nothing has: EEXIST if something has it by now.
    void takeName(const std::string& name);

    // Hands on the file, open for writing. The last call.
    [[nodiscard]] FileDescriptor release() noexcept { return std::move(_file); }

private:
    int link(const char* name) const;

    const int _folder;
    std::optional<SignalMask> _heldSignals; // released last
    std::string _temporaryName;             // empty: none
    FileDescriptor _file;
};

} // namespace VeltoTouch::Files
