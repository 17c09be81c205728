#include "Velto/Commands/Keeping.h"

#include "Platform/FileDescriptor.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Daemon/Configuration.h"
#include "Velto/Daemon/KeptConfiguration.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

bool isSameFolder(const std::filesystem::path& one, const std::filesystem::path& other) {
    std::error_code error; // of one that is not there
    return one == other || std::filesystem::equivalent(one, other, error);
}

// A served surface, and the configuration that it reads.
struct ConfigurationReader {
    std::string element;
    std::filesystem::path folder;
    bool isTrusted; // served by root or this program's user
};

std::vector<ConfigurationReader> readersOn(Bus::Which bus) {
    std::vector<std::string> served;
    try {
        served = Bus::servedOn(bus);
    } catch (const std::runtime_error&) { // no bus, no service
    }
    std::vector<ConfigurationReader> readers;
    for (const std::string& element : served) {
        Bus::Client client(bus, element);
        const uid_t user = client.user();
        readers.push_back(
            {.element = element, .folder = client.configuration(), .isTrusted = user == 0 || user == ::geteuid()});
    }
    return readers;
}

// The folder that all served surfaces read. Another user's service, unless root's, may name the machine's alone.
std::filesystem::path folderOf(const std::vector<ConfigurationReader>& readers) {
    if (readers.empty())
        return kConfigurationFolder;
    const auto& [element, folder, isTrusted] = readers.front();
    for (const ConfigurationReader& reader : readers) {
        if (!isSameFolder(reader.folder, folder))
            throw std::runtime_error(fmt::format("{} reads {}, {} reads {}: say which is meant (--config FOLDER)",
                                                 element, folder.native(), reader.element, reader.folder.native()));
    }
    if (isSameFolder(folder, kConfigurationFolder))
        return kConfigurationFolder;
    if (!isTrusted)
        throw std::runtime_error(fmt::format("{} is served by another user and reads {} (--config {} keeps there)",
                                             element, folder.native(), folder.native()));
    return folder;
}

// Held from the reading of the file until it is replaced.
class FolderLock {
public:
    // Waits for whoever has it, but not for ever: who may read the folder may lock it.
    explicit FolderLock(const std::filesystem::path& folder)
        : _folder(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        while (!_folder.isOpen() || ::flock(_folder.get(), LOCK_EX | LOCK_NB) != 0) {
            if (errno != EWOULDBLOCK && errno != EINTR)
                throw std::system_error(errno, std::generic_category());
            if (std::chrono::steady_clock::now() > deadline)
                throw std::runtime_error("nothing is kept: somebody has locked the folder");
            std::this_thread::sleep_for(kBetweenTries);
        }
    }

private:
    static constexpr std::chrono::seconds kPatience{10};
    static constexpr std::chrono::milliseconds kBetweenTries{5};

    const FileDescriptor _folder;
};

// Everybody may read the file: the service is not root. Returns whether it was written: not if lines would be lost.
bool write(const std::filesystem::path& file, const ConfigurationEntries& kept) {
    ::umask(022);
    std::filesystem::create_directories(file.parent_path());
    const FolderLock lock(file.parent_path());
    std::vector<Complaint> lost;
    ConfigurationEntries entries;
    if (std::filesystem::exists(file))
        put(entries, readKept(file, lost));
    for (const Complaint& complaint : lost)
        complain(textOf(complaint.origin), complaint.message);
    if (!lost.empty())
        return false;
    put(entries, kept);
    writeFile(file, keptText(entries));
    return true;
}

// A file that comes later has the last word. Returns the exit status.
int reportOverruled(const std::filesystem::path& folder, const std::filesystem::path& file,
                    const ConfigurationEntries& kept) {
    const Configuration configuration = readConfiguration(folder);
    int status = 0;
    const auto report = [&](const std::string& name, const Origin& origin) {
        if (origin.file == file)
            return;
        complain(name, "kept, but " + textOf(origin) + " counts");
        status = 1;
    };
    for (const ConfiguredSetting& setting : configuration.settings) {
        if (std::ranges::count(kept.settings, setting.key, &ConfiguredSetting::key) > 0)
            report(setting.key, setting.origin);
    }
    for (const ConfiguredKey& key : configuration.keys) {
        if (find(kept, key.place) != nullptr)
            report(fullKeyOf(key.place), key.origin);
    }
    return status;
}

// All that read the folder, whatever comes of the others. Returns the exit status.
int reload(Bus::Which bus, const std::filesystem::path& folder) {
    const std::vector<std::string> served = Bus::servedOn(bus);
    if (served.empty())
        throw std::runtime_error("no surface is served");
    bool isRead = false;
    const int status = forEachFile(served, [&](const std::string& element) {
        Bus::Client client(bus, element);
        if (!isSameFolder(client.configuration(), folder))
            return;
        isRead = true;
        client.reload();
    });
    if (status == 0 && !isRead)
        throw std::runtime_error("no surface that is served reads it");
    return status;
}

} // namespace

int keep(const ConfigurationEntries& entries, const std::filesystem::path& given, Bus::Which bus) {
    const std::filesystem::path folder = given.empty() ? folderOf(readersOn(bus)) : given;
    if (folder == kConfigurationFolder && ::geteuid() != 0)
        throw std::runtime_error("only root may keep settings (sudo velto set --keep)");
    const std::filesystem::path file = keptFileIn(folder);
    if (!about(file, [&] { return write(file, entries); })) {
        complain(file.native(),
                 "nothing is kept: these lines would be lost (correct them, or move them to config.toml)");
        return 1;
    }
    const int status = reportOverruled(folder, file, entries);
    try {
        return std::max(status, reload(bus, folder));
    } catch (const std::runtime_error& error) {
        writeErrorLine(fmt::format("velto: kept{}, from the next start on: {}",
                                   given.empty() ? " in " + folder.native() : "", error.what()));
    }
    return status;
}

} // namespace VeltoTouch::Velto
