#include "Velto/Daemon/Configuration.h"

#include "Platform/FileDescriptor.h"
#include "Plugin/Pipeline/Properties.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <toml++/toml.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

// A table's name that is longer than any that is wanted is wrong, whatever is in the table.
constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLargestFile = std::size_t{16} << 10U; // the parser goes as deep as a file has dots

Ref<Value> valueAt(const toml::node& node) {
    if (const auto* number = node.as_integer())
        return Number::withLongLong(number->get());
    if (const auto* number = node.as_floating_point())
        return Number::withDouble(number->get());
    if (const auto* number = node.as_boolean())
        return Number::withBool(number->get());
    return makeRef<Null>(); // no setting takes anything else
}

// The members of one file.
class FileReader {
public:
    FileReader(Configuration::File& file, std::vector<Complaint>& complaints) : _file(file), _complaints(complaints) {}

    void read(const toml::table& root) {
        for (const auto& [key, node] : root) {
            const toml::table* const table = node.as_table();
            const Origin origin = at(key);
            attempt(origin, [&, name = key.str()] {
                if (name != kRecognizerTable && name != kKeysDomain)
                    refuse(fmt::format("unknown name '{}' ([{}] and [{}] are wanted)", name, kRecognizerTable,
                                       kKeysDomain));
                if (table == nullptr)
                    refuse(fmt::format("{}: a table is wanted", name));
                forEachValue(*table, "", [&](const std::string& member, const toml::node& value, const Origin& place) {
                    return name == kKeysDomain ? readKey(member, value, place) : readSetting(member, value, place);
                });
            });
        }
    }

private:
    [[nodiscard]] Origin at(const toml::key& key) const {
        return {.file = _file.path, .line = key.source().begin.line};
    }

    template <class Step>
    void attempt(const Origin& origin, const Step& step) {
        try {
            step();
        } catch (const std::invalid_argument& error) {
            _complaints.push_back({.origin = origin, .message = error.what()});
        }
    }

    // With the dotted names of values in tables of the table.
    template <class Handle>
    void forEachValue(const toml::table& table, const std::string& prefix, const Handle& handle) {
        for (const auto& [key, node] : table) {
            const std::string name = prefix + std::string(key.str());
            const Origin origin = at(key);
            if (const toml::table* members = node.as_table(); members != nullptr && name.size() <= kLongestName)
                forEachValue(*members, name + ".", handle);
            else
                attempt(origin, [&, &value = node] { handle(name, value, origin); });
        }
    }

    void readSetting(const std::string& name, const toml::node& node, const Origin& origin) {
        const ConfiguredSetting& setting = _file.settings.emplace_back(configuredSetting(name, valueAt(node), origin));
        const std::string doubt = judgeWrite(setting.key, setting.value.get()).reason;
        if (!doubt.empty())
            _complaints.push_back(
                {.origin = origin, .message = fmt::format("{}: {}", name, doubt), .isLeftOut = false});
    }

    void readKey(const std::string& name, const toml::node& node, const Origin& origin) {
        _file.keys.push_back(configuredKey(name, node.value_exact<std::string>().value_or(""), origin));
    }

    Configuration::File& _file;
    std::vector<Complaint>& _complaints;
};

// Why a file has no effect.
struct Unreadable : std::runtime_error {
    Unreadable(std::uint32_t where, const std::string& why) : std::runtime_error(why), line(where) {}
    std::uint32_t line;
};

// Nothing is waited for, and there is an end: what is no regular file, or more than a person writes, is not read.
std::string readText(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        throw std::system_error(errno, std::generic_category());
    if (!S_ISREG(status.st_mode))
        throw Unreadable(0, "it is no regular file");
    std::string text(kLargestFile + 1, '\0');
    std::size_t size = 0;
    for (ssize_t count = 1; count != 0; size += static_cast<std::size_t>(count)) {
        count = ::read(file.get(), text.data() + size, text.size() - size);
        if (count < 0)
            throw std::system_error(errno, std::generic_category());
    }
    if (size > kLargestFile)
        throw Unreadable(0, fmt::format("it is larger than {} KiB", kLargestFile / 1024));
    text.resize(size);
    return text;
}

toml::table parse(const std::string& path) {
    try {
        return toml::parse(readText(path), path);
    } catch (const toml::parse_error& error) {
        throw Unreadable(error.source().begin.line, fmt::format("this is no TOML: {}", error.description()));
    } catch (const std::system_error& error) {
        throw Unreadable(0, error.code().message());
    }
}

Configuration::File readWhole(const std::string& path, std::vector<Complaint>& complaints) {
    const toml::table root = parse(path);
    Configuration::File file;
    file.path = path;
    std::vector<Complaint> found;
    FileReader(file, found).read(root);
    std::ranges::stable_sort(found, {}, [](const Complaint& complaint) { return complaint.origin.line; });
    std::ranges::move(found, std::back_inserter(complaints));
    return file;
}

void readFile(const std::string& path, const Configuration& inForce, Configuration& configuration) {
    try {
        configuration.files.push_back(readWhole(path, configuration.complaints));
    } catch (const Unreadable& error) {
        const auto before = std::ranges::find(inForce.files, path, &Configuration::File::path);
        const bool isInForce = before != inForce.files.end();
        if (isInForce)
            configuration.files.push_back(*before);
        configuration.complaints.push_back(
            {.origin = {.file = path, .line = error.line},
             .message = fmt::format("{}; {}", error.what(),
                                    isInForce ? "what the file said before goes on" : "the file is left out")});
    }
}

// The files of config.d; if they cannot be listed, those that are in force, whose readers say the rest.
std::vector<std::string> listed(const std::filesystem::path& folder, const Configuration& inForce,
                                std::vector<Complaint>& complaints) {
    std::error_code error;
    std::vector<std::string> files;
    for (auto entry = std::filesystem::directory_iterator(folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::filesystem::path& path = entry->path();
        if (path.extension() == ".toml" && !path.filename().native().starts_with('.'))
            files.push_back(path);
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        Complaint& complaint = complaints.emplace_back();
        complaint.origin.file = folder;
        complaint.message = error.message();
        files.clear();
        for (const Configuration::File& file : inForce.files) {
            if (std::filesystem::path(file.path).parent_path() == folder)
                files.push_back(file.path);
        }
    }
    std::ranges::sort(files);
    return files;
}

std::vector<std::string> filesOf(const std::filesystem::path& folder, const Configuration& inForce,
                                 std::vector<Complaint>& complaints) {
    std::vector<std::string> files = listed(folder / "config.d", inForce, complaints);
    std::error_code unreadable; // which its reader says
    const std::filesystem::path first = folder / "config.toml";
    if (std::filesystem::symlink_status(first, unreadable).type() != std::filesystem::file_type::not_found)
        files.insert(files.begin(), first);
    return files;
}

} // namespace

Configuration readConfiguration(const std::filesystem::path& folder, const Configuration& inForce) {
    Configuration configuration;
    for (const std::string& path : filesOf(folder, inForce, configuration.complaints))
        readFile(path, inForce, configuration);
    for (const Configuration::File& file : configuration.files)
        put(configuration, file);
    return configuration;
}

Configuration::File readConfigurationFile(const std::string& path, std::vector<Complaint>& complaints) {
    try {
        return readWhole(path, complaints);
    } catch (const Unreadable& error) {
        throw std::runtime_error(error.line == 0 ? error.what()
                                                 : fmt::format("{} (line {})", error.what(), error.line));
    }
}

} // namespace VeltoTouch
