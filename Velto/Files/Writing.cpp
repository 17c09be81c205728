#include "Velto/Files/Writing.h"

#include "Velto/Files/NewFile.h"
#include "Velto/Files/Place.h"
#include "Velto/Files/Reading.h"
#include "Velto/Files/SystemCalls.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <tuple>

#include <fcntl.h>

namespace VeltoTouch::Files {
namespace {

// The process's mask takes its share. No call asks for it without changing it, under other threads too, which is left
// for where there is no /proc.
mode_t maskOfNewFiles() {
    constexpr std::string_view kName = "Umask:";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(kName))
            return static_cast<mode_t>(std::stoul(line.substr(kName.size()), nullptr, 8));
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

// Gives a file owner, group and rights of the one that it is to replace. Marks that let a program run as its owner or
// group are no rights: whoever put such a file there is not handed ours.
void takeOver(int file, const Place& place) {
    const auto& old = *place.status;
    bool isGroupKept = ::fchown(file, old.st_uid, old.st_gid) == 0;
    if (!isGroupKept) {
        if (statusOf(file).st_uid != old.st_uid && place.isShared())
            throw std::runtime_error("it belongs to another user, in a folder where others may write");
        isGroupKept = ::fchown(file, static_cast<uid_t>(-1), old.st_gid) == 0;
    }
    const mode_t kept = S_IRWXU | S_IRWXO | (isGroupKept ? S_IRWXG : 0U); // no other group gets the old one's rights
    check(::fchmod(file, old.st_mode & kept));
}

void prepare(int file, const Place& place) {
    if (place.status)
        takeOver(file, place);
    else
        check(::fchmod(file, 0666 & ~maskOfNewFiles()));
}

// A protected file stays, though its folder would let it be replaced.
void requireRightToWrite(const Place& place) {
    if (place.status)
        check(::faccessat(place.folder.get(), place.name.c_str(), W_OK, 0));
}

// The name lasts as the content does. Where the folder may not be read or its file system knows no such call, the
// system does that in its own time.
void syncFolder(const Place& place) {
    const FileDescriptor folder(::openat(place.folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen() && ::fsync(folder.get()) != 0 && errno != EINVAL)
        throwSystemError();
}

// `name` gives the file its name.
FileDescriptor writeWhole(const Place& place, std::string_view content,
                          void (NewFile::*name)(const std::string&) = &NewFile::moveTo) {
    requireRightToWrite(place);
    NewFile file(place.folder);
    writeAll(file.descriptor(), content);
    prepare(file.descriptor(), place);
    check(::fsync(file.descriptor()));
    (file.*name)(place.name);
    syncFolder(place);
    return file.release();
}

// Devices, pipes and what stands for an open descriptor: whatever is there already stays. Returns false if it is a
// file by now, which is never written in place.
bool writeInPlace(const Place& place, std::string_view content) {
    const int followed = place.isOpenDescriptor() ? 0 : O_NOFOLLOW;
    FileDescriptor file =
        opened(::openat(place.folder.get(), place.name.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | followed));
    if (!place.isOpenDescriptor() && S_ISREG(statusOf(file.get()).st_mode))
        return false;
    writeAll(file.get(), content);
    check(::close(file.release())); // a write can fail as late as here
    return true;
}

} // namespace

void writeFile(const std::string& path, std::string_view content) {
    for (;;) {
        const Place place = Place::at(path);
        if (place.isForFile()) {
            std::ignore = writeWhole(place, content);
            return;
        }
        if (writeInPlace(place, content))
            return;
    }
}

FileDescriptor beginFile(const std::string& path, std::string_view content) {
    const Place place = Place::at(path);
    if (!place.isForFile())
        throw std::runtime_error("it is no regular file");
    return writeWhole(place, content);
}

FileDescriptor beginNewFile(const std::string& path, std::string_view content) {
    return writeWhole(Place::at(path), content, &NewFile::takeName);
}

void requireWritable(const std::string& path) {
    const Place place = Place::at(path);
    requireRightToWrite(place);
    if (place.isForFile())
        prepare(NewFile(place.folder).descriptor(), place);
}

void writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), std::min(content.size(), kChunk));
        if (written >= 0)
            content.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            throwSystemError();
    }
}

} // namespace VeltoTouch::Files
