#include "Velto/Files/NewFile.h"

#include "Velto/Files/SystemCalls.h"

#include <random>

#include <fcntl.h>
#include <fmt/format.h>

namespace VeltoTouch::Files {
namespace {

constexpr mode_t kForItsOwner = 0600;

// A name for a file without one is made of its descriptor's below /proc.
FileDescriptor unnamedFile(int folder) noexcept {
    if (::access("/proc/self/fd", X_OK) != 0)
        return {};
    return FileDescriptor(::openat(folder, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, kForItsOwner));
}

// Calls `make` with names until one is new. Gives that name.
template <class Make>
std::string makeTemporaryName(const Make& make) {
    for (std::random_device random;;) {
        std::string name = fmt::format(".velto.{:08x}", random());
        if (make(name.c_str()) >= 0)
            return name;
        if (errno != EEXIST)
            throwSystemError();
    }
}

} // namespace

NewFile::NewFile(const FileDescriptor& folder) : _folder(folder.get()), _file(unnamedFile(_folder)) {
    if (_file.isOpen())
        return;
    _heldSignals.emplace(SignalMask::all());
    _temporaryName = makeTemporaryName([this](const char* name) {
        _file = FileDescriptor(::openat(_folder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kForItsOwner));
        return _file.get();
    });
}

NewFile::~NewFile() {
    if (!_temporaryName.empty())
        ::unlinkat(_folder, _temporaryName.c_str(), 0);
}

void NewFile::moveTo(const std::string& name) {
    if (_temporaryName.empty()) {
        const std::string self = fmt::format("/proc/self/fd/{}", _file.get());
        const auto link = [&](const char* newName) {
            return ::linkat(AT_FDCWD, self.c_str(), _folder, newName, AT_SYMLINK_FOLLOW);
        };
        if (link(name.c_str()) == 0)
            return;
        if (errno != EEXIST)
            throwSystemError();
        _heldSignals.emplace(SignalMask::all());
        _temporaryName = makeTemporaryName(link);
    }
    check(::renameat(_folder, _temporaryName.c_str(), _folder, name.c_str()));
    _temporaryName.clear();
    _heldSignals.reset();
}

} // namespace VeltoTouch::Files
