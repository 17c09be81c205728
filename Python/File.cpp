#include "Python/File.h"

#include "Platform/FileDescriptor.h"
#include "Plugin/Recording/LargeText.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace VeltoTouch::Python {
namespace {

constexpr std::size_t kLargestFile = (std::size_t{4} << 30U) - 1; // what the parser can address
constexpr std::size_t kChunk = std::size_t{1} << 20U;

[[noreturn]] void throwSystemError() { throw std::system_error(errno, std::generic_category()); }

void check(bool isDone) {
    if (!isDone)
        throwSystemError();
}

struct stat statusOf(const FileDescriptor& file) {
    struct stat status {};
    check(::fstat(file.get(), &status) == 0);
    return status;
}

void writeAll(const FileDescriptor& file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(file.get(), content.data(), std::min(content.size(), kChunk));
        check(written >= 0 || errno == EINTR);
        content.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

// No name that is taken, nor one that can be foreseen.
std::string nameBeside(const std::string& path) {
    std::random_device random;
    return path + "." + std::to_string(random()) + std::to_string(random());
}

// Beside the file that it is to replace. Removed again unless it becomes that.
class NewFile {
public:
    // The process's mask takes its share of the rights: it can be asked for only by changing it under other threads.
    NewFile(const std::string& path, mode_t rights)
        : _path(nameBeside(path)), _file(::open(_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, rights)) {
        check(_file.isOpen());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (!_path.empty())
            ::unlink(_path.c_str());
    }

    // `rights`: those of the file that it replaces.
    void become(const std::string& path, std::optional<mode_t> rights, std::string_view content) {
        writeAll(_file, content);
        check(!rights || ::fchmod(_file.get(), *rights) == 0);
        check(::fsync(_file.get()) == 0);
        check(::rename(_path.c_str(), path.c_str()) == 0);
        _path.clear();
    }

private:
    std::string _path;
    const FileDescriptor _file;
};

} // namespace

void requireReadable(std::size_t size) {
    if (size > kLargestFile)
        throw std::invalid_argument("4 GiB or larger");
}

Ref<Data> readFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    check(file.isOpen());
    const auto expected = static_cast<std::size_t>(statusOf(file).st_size); // of a pipe or device 0
    std::string content = roomForText(std::min(expected, kLargestFile) + 1);
    for (std::size_t size = 0;;) {
        const std::size_t room = content.capacity() - Data::kPadding;
        content.resize(room > size ? std::min(size + kChunk, room) : size + kChunk);
        const ssize_t count = ::read(file.get(), content.data() + size, content.size() - size);
        check(count >= 0 || errno == EINTR);
        size += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        requireReadable(size);
        if (count == 0) {
            content.resize(size);
            return makeRef<Data>(std::move(content));
        }
    }
}

void writeFile(const std::string& path, std::string_view content) {
    struct stat status {};
    const bool isThere = ::stat(path.c_str(), &status) == 0;
    check(isThere || errno == ENOENT);
    if (isThere && !S_ISREG(status.st_mode)) {
        const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
        check(file.isOpen());
        return writeAll(file, content);
    }
    if (isThere)
        check(::access(path.c_str(), W_OK) == 0);                                          // a protected file stays
    const std::string target = isThere ? std::filesystem::canonical(path).string() : path; // links stay links
    constexpr mode_t kRights = S_IRWXU | S_IRWXG | S_IRWXO;
    if (isThere)
        NewFile(target, S_IRUSR | S_IWUSR).become(target, status.st_mode & kRights, content);
    else
        NewFile(target, 0666).become(target, {}, content);
}

} // namespace VeltoTouch::Python
