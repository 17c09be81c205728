#include "Velto/Files/NewFile.h"

#include "Velto/Files/SystemCalls.h"

#include <cstdio>
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

int NewFile::link(const char* name) const {
    const std::string self = fmt::format("/proc/self/fd/{}", _file.get());
    return ::linkat(AT_FDCWD, self.c_str(), _folder, name, AT_SYMLINK_FOLLOW);
}

void NewFile::moveTo(const std::string& name) {
    if (_temporaryName.empty()) {
        if (link(name.c_str()) == 0)
            return;
        if (errno != EEXIST)
            throwSystemError();
        _heldSignals.emplace(SignalMask::all());
        _temporaryName = makeTemporaryName([this](const char* newName) { return link(newName); });
    }
    check(::renameat(_folder, _temporaryName.c_str(), _folder, name.c_str()));
    _temporaryName.clear();
    _heldSignals.reset();
}

// Some file systems cannot rename without replacing, others know no links.
void NewFile::takeName(const std::string& name) {
    if (_temporaryName.empty())
        return check(link(name.c_str()));
    if (::renameat2(_folder, _temporaryName.c_str(), _folder, name.c_str(), RENAME_NOREPLACE) == 0)
        _temporaryName.clear();
    else if (errno == EINVAL)
        check(::linkat(_folder, _temporaryName.c_str(), _folder, name.c_str(), 0));
    else
        throwSystemError();
}

} // namespace VeltoTouch::Files
