#include "Velto/Daemon/OpenNodes.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

namespace VeltoTouch {
namespace {

namespace fs = std::filesystem;

// A process may end, and a descriptor be closed, at any moment: what cannot be read is left out.
std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator it(folder, error); !error && it != fs::directory_iterator(); it.increment(error))
        entries.push_back(it->path());
    return entries;
}

std::optional<pid_t> numberOf(const fs::path& folder) {
    const std::string name = folder.filename();
    pid_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc() && end == name.data() + name.size() ? std::optional(number) : std::nullopt;
}

bool hasOpen(const fs::path& process, const std::string& node) {
    return std::ranges::any_of(entriesOf(process / "fd"), [&](const fs::path& descriptor) {
        std::error_code error;
        return fs::read_symlink(descriptor, error) == node;
    });
}

} // namespace

std::vector<Process> processesWithOpen(const std::string& node) {
    std::vector<Process> processes;
    for (const fs::path& folder : entriesOf("/proc")) {
        const auto number = numberOf(folder);
        if (!number || !hasOpen(folder, node))
            continue;
        std::string name;
        std::getline(std::ifstream(folder / "comm"), name);
        processes.push_back({.number = *number, .name = name});
    }
    std::ranges::sort(processes, {}, &Process::number);
    return processes;
}

} // namespace VeltoTouch
