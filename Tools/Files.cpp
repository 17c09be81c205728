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

constexpr std::size_t kLargestFile = (std::size_t{4} << 30U) - 1;
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
        content.resize(std::max(size + 1, std::min(size + kChunk, content.capacity() - Data::kPadding)));
        const ssize_t count = ::read(descriptor, content.data() + size, content.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwSystemError();
        size += static_cast<std::size_t>(count);
        progress.update(size);
        if (size > kLargestFile)
            throw std::runtime_error("larger than 4 GiB");
        if (count == 0) {
            content.resize(size);
            return content;
        }
    }
}

// Writes a new file beside `path` and renames it; the new file goes when anything fails.
void replaceFile(const std::string& path, std::string_view content, mode_t mode) {
    std::string temporary = path + ".XXXXXX";
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

mode_t modeOfNewFiles() noexcept {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

Ref<Data> readFile(const std::string& path) {
    if (path == "-")
        return makeRef<Data>(readAll(STDIN_FILENO, 0, "standard input"));
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        throwSystemError();
    return makeRef<Data>(readAll(file.get(), static_cast<std::size_t>(status.st_size), path));
}

void writeFile(const std::string& path, std::string_view content) {
    if (path.empty())
        return writeStandardOutput(content);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return replaceFile(path, content, modeOfNewFiles());
    if (!S_ISREG(status.st_mode)) {
        Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
        writeAll(file.get(), content);
        return file.close();
    }
    // A link stays one: what it points to is replaced.
    const std::unique_ptr<char, decltype(&std::free)> target(::realpath(path.c_str(), nullptr), &std::free);
    if (target == nullptr)
        throwSystemError();
    replaceFile(target.get(), content, status.st_mode & 07777);
}

void writeStandardOutput(std::string_view text) {
    try {
        writeAll(STDOUT_FILENO, text);
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::broken_pipe)
            throw ClosedPipe();
        throw std::runtime_error(std::string("standard output: ") + error.what());
    }
}

} // namespace VeltoTouch::Tools
