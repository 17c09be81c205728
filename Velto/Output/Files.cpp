#include "Velto/Output/Files.h"

#include "Plugin/Recording/LargeText.h"
#include "Velto/Output/NewFile.h"
#include "Velto/Output/Place.h"
#include "Velto/Output/Progress.h"
#include "Velto/Output/SystemCalls.h"

#include <algorithm>
#include <stdexcept>
#include <tuple>

#include <fcntl.h>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr std::size_t kLargestFile = (std::size_t{4} << 30U) - 1; // what the parser can address
constexpr std::size_t kChunk = std::size_t{1} << 20U;

void writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), std::min(content.size(), kChunk));
        if (written >= 0)
            content.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            throwSystemError();
    }
}

std::string readAll(int descriptor, std::size_t expectedSize, const std::string& name) {
    std::string content = roomForText(std::min(expectedSize, kLargestFile) + 1);
    Progress progress("reading " + name, expectedSize);
    for (std::size_t size = 0;;) {
        const std::size_t room = content.capacity() - Data::kPadding;
        content.resize(room > size ? std::min(size + kChunk, room) : size + kChunk);
        const ssize_t count = ::read(descriptor, content.data() + size, content.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwSystemError();
        size += static_cast<std::size_t>(count);
        progress.update(size);
        if (size > kLargestFile)
            throw std::runtime_error("4 GiB or larger");
        if (count == 0) {
            content.resize(size);
            return content;
        }
    }
}

mode_t modeOfNewFiles() noexcept {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
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
        check(::fchmod(file, modeOfNewFiles()));
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

FileDescriptor writeWhole(const Place& place, std::string_view content) {
    requireRightToWrite(place);
    NewFile file(place.folder);
    writeAll(file.descriptor(), content);
    prepare(file.descriptor(), place);
    check(::fsync(file.descriptor()));
    file.moveTo(place.name);
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

Ref<Data> readFile(const std::string& path) {
    if (path == "-")
        return makeRef<Data>(readAll(STDIN_FILENO, kChunk, "standard input"));
    const FileDescriptor file = opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const auto size = static_cast<std::size_t>(statusOf(file.get()).st_size); // of a pipe or device 0
    return makeRef<Data>(readAll(file.get(), size > 0 ? size : kChunk, path));
}

void forEachLine(const std::string& path, const std::function<void(std::string_view line)>& handle) {
    const Ref<Data> content = readFile(path);
    std::string_view rest = content->bytes();
    for (std::size_t number = 1; !rest.empty(); ++number) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        try {
            handle(rest.substr(0, end));
        } catch (const std::invalid_argument& error) {
            throw std::invalid_argument(fmt::format("{} (line {})", error.what(), number));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

bool isStandardOutput(std::string_view path) noexcept { return path.empty() || path == "-"; }

void writeFile(const std::string& path, std::string_view content) {
    if (isStandardOutput(path))
        return writeStandardOutput(content);
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

void requireWritable(const std::string& path) {
    const Place place = Place::at(path);
    requireRightToWrite(place);
    if (place.isForFile())
        prepare(NewFile(place.folder).descriptor(), place);
}

void writeStandardOutput(std::string_view text) {
    try {
        writeAll(STDOUT_FILENO, text);
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::broken_pipe)
            throw ClosedPipe();
        throw OutputFailed(std::string("standard output: ") + error.what());
    }
}

} // namespace VeltoTouch::Velto
