#include "Velto/Files/Reading.h"

#include "Plugin/Recording/LargeText.h"
#include "Velto/Files/SystemCalls.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace VeltoTouch::Files {
namespace {

constexpr std::size_t kLargestFile = (std::size_t{4} << 30U) - 1; // what the parser can address

} // namespace

void requireReadable(std::size_t size) {
    if (size > kLargestFile)
        throw std::invalid_argument("4 GiB or larger");
}

FileDescriptor openToRead(const std::string& path) { return opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC)); }

std::size_t expectedSizeOf(const FileDescriptor& file) {
    const auto size = static_cast<std::size_t>(statusOf(file.get()).st_size); // of a pipe or device 0
    return size > 0 ? size : kChunk;
}

std::optional<char> nextByteOf(int descriptor) {
    std::array<int, 2> ends{};
    check(::pipe2(ends.data(), O_CLOEXEC));
    const FileDescriptor output(ends[0]);
    const FileDescriptor input(ends[1]);
    char byte = 0;
    const bool isFound = ::recv(descriptor, &byte, 1, MSG_PEEK) == 1 ||
                         (::tee(descriptor, input.get(), 1, 0) == 1
                              ? ::read(output.get(), &byte, 1) == 1
                              : ::pread(descriptor, &byte, 1, ::lseek(descriptor, 0, SEEK_CUR)) == 1);
    return isFound ? std::optional(byte) : std::nullopt;
}

Ref<Data> readAll(int descriptor, std::size_t expectedSize, const std::function<void(std::size_t size)>& progress) {
    std::string content = roomForText(std::min(expectedSize, kLargestFile) + 1);
    for (std::size_t size = 0;;) {
        const std::size_t room = content.capacity() - Data::kPadding;
        content.resize(room > size ? std::min(size + kChunk, room) : size + kChunk);
        const ssize_t count = ::read(descriptor, content.data() + size, content.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwSystemError();
        size += static_cast<std::size_t>(count);
        progress(size);
        requireReadable(size);
        if (count == 0) {
            content.resize(size);
            return makeRef<Data>(std::move(content));
        }
    }
}

} // namespace VeltoTouch::Files
