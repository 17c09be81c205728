#include "Tools/Files.h"

#include "Tools/Progress.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VeltoTouch::Tools {
namespace {

constexpr std::size_t kLargestFile = (std::size_t{4} << 30U) - 1; // what the parser can address
constexpr std::size_t kChunk = std::size_t{1} << 20U;

[[noreturn]] void throwSystemError() { throw std::system_error(errno, std::generic_category()); }

// An open descriptor, closed at the end.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : _descriptor(descriptor) {
        if (descriptor < 0)
            throwSystemError();
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (_descriptor >= 0)
            ::close(_descriptor);
    }

    [[nodiscard]] int get() const noexcept { return _descriptor; }

    // A write can fail as late as here.
    void close() {
        if (::close(std::exchange(_descriptor, -1)) != 0)
            throwSystemError();
    }

private:
    int _descriptor;
};

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
    std::string content = Data::roomFor(std::min(expectedSize, kLargestFile) + 1);
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

// Writes a new file beside `path` and renames it; the new file goes when anything fails.
void replaceFile(const std::string& path, std::string_view content, mode_t mode) {
    std::string temporary = path.substr(0, path.rfind('/') + 1) + ".velto.XXXXXX";
    Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    try {
        writeAll(file.get(), content);
        if (::fchmod(file.get(), mode) != 0 || ::fsync(file.get()) != 0)
            throwSystemError();
        file.close();
        if (::rename(temporary.c_str(), path.c_str()) != 0)
            throwSystemError();
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
}

// Devices, pipes and what stands for an open descriptor: whatever is there already stays.
void writeInPlace(const std::string& path, std::string_view content) {
    Descriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    writeAll(file.get(), content);
    file.close();
}

mode_t modeOfNewFiles() noexcept {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

Ref<Data> readFile(const std::string& path) {
    if (path == "-")
        return makeRef<Data>(readAll(STDIN_FILENO, kChunk, "standard input"));
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        throwSystemError();
    const auto size = static_cast<std::size_t>(status.st_size); // of a pipe or device 0
    return makeRef<Data>(readAll(file.get(), size > 0 ? size : kChunk, path));
}

bool isStandardOutput(std::string_view path) noexcept { return path.empty() || path == "-"; }

void writeFile(const std::string& path, std::string_view content) {
    if (isStandardOutput(path))
        return writeStandardOutput(content);
    if (path.starts_with("/dev/") || path.starts_with("/proc/"))
        return writeInPlace(path, content);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        if (errno != ENOENT || ::lstat(path.c_str(), &status) == 0) // a link to nothing is not replaced
            throwSystemError();
        return replaceFile(path, content, modeOfNewFiles());
    }
    if (!S_ISREG(status.st_mode))
        return writeInPlace(path, content);
    if (::access(path.c_str(), W_OK) != 0) // a protected file stays, though its folder would let it be replaced
        throwSystemError();
    // A link stays one: what it points to is replaced.
    const std::unique_ptr<char, decltype(&std::free)> target(::realpath(path.c_str(), nullptr), &std::free);
    if (target == nullptr)
        throwSystemError();
    replaceFile(target.get(), content, status.st_mode & 07777);
}

void requireWritable(const std::string& path) {
    const auto slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    struct stat status {};
    const bool isThere = ::stat(path.c_str(), &status) == 0;
    if (::access(isThere ? path.c_str() : folder.c_str(), W_OK) != 0)
        throwSystemError();
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

} // namespace VeltoTouch::Tools
