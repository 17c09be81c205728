#include "Velto/Output/Files.h"

#include "Velto/Files/Reading.h"
#include "Velto/Output/Progress.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>

#include <fmt/format.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

Ref<Data> readAll(int descriptor, std::size_t expectedSize, const std::string& name) {
    Progress progress("reading " + name, expectedSize);
    return Files::readAll(descriptor, expectedSize, [&progress](std::size_t size) { progress.update(size); });
}

} // namespace

Ref<Data> readFile(const std::string& path) {
    if (path == "-")
        return readAll(STDIN_FILENO, Files::kChunk, "standard input");
    const FileDescriptor file = Files::openToRead(path);
    return readAll(file.get(), Files::expectedSizeOf(file), path);
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
        writeStandardOutput(content);
    else
        Files::writeFile(path, content);
}

void writeStandardOutput(std::string_view text) {
    try {
        Files::writeAll(STDOUT_FILENO, text);
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::broken_pipe)
            throw ClosedPipe();
        throw OutputFailed(std::string("standard output: ") + error.what());
    }
}

} // namespace VeltoTouch::Velto
