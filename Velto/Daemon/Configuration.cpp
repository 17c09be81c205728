#include "Velto/Daemon/Configuration.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/KeyNames.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <toml++/toml.h>

namespace VeltoTouch {
namespace {

constexpr std::string_view kRecognizer = "recognizer";
constexpr std::string_view kKeys = "keys";

[[noreturn]] void refuse(const std::string& what) { throw std::invalid_argument(what); }

std::vector<std::string_view> settingNames() {
    std::vector<std::string_view> names;
    for (const SettingRow& row : kSettingRows) {
        if (!row.is<SettingRow::Action>())
            names.push_back(row.key);
    }
    return names;
}

std::vector<std::string> keyNames() {
    std::vector<std::string> names;
    for (const KeyUseRow& row : kKeyUseRows) {
        for (const RegionRow& region : kRegionsWithPads)
            names.push_back(nameOf(row.use, region.region));
    }
    return names;
}

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
                if (name != kRecognizer && name != kKeys)
                    refuse(fmt::format("unknown name '{}' ([{}] and [{}] are wanted)", name, kRecognizer, kKeys));
                if (table == nullptr)
                    refuse(fmt::format("{}: a table is wanted", name));
                forEachValue(*table, "", [&](const std::string& member, const toml::node& value, const Origin& place) {
                    return name == kKeys ? readKey(member, value, place) : readSetting(member, value, place);
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
            if (const toml::table* members = node.as_table())
                forEachValue(*members, name + ".", handle);
            else
                attempt(origin, [&, &value = node] { handle(name, value, origin); });
        }
    }

    void readSetting(const std::string& name, const toml::node& node, const Origin& origin) {
        const ConfiguredSetting& setting = _file.settings.emplace_back(configuredSetting(name, valueAt(node), origin));
        const std::string doubt = judgeWrite(setting.key, setting.value.get()).reason;
        if (!doubt.empty())
            refuse(fmt::format("{}: {}", name, doubt));
    }

    void readKey(const std::string& name, const toml::node& node, const Origin& origin) {
        _file.keys.push_back(configuredKey(name, node.value_exact<std::string>().value_or(""), origin));
    }

    Configuration::File& _file;
    std::vector<Complaint>& _complaints;
};

std::string readText(const std::string& path) {
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    if (!stream || (stream.peek() != std::ifstream::traits_type::eof() && !(text << stream.rdbuf())) || stream.bad())
        throw std::system_error(errno, std::generic_category());
    return text.str();
}

// The tables of a file; none, and a complaint, if it is not as files are.
std::optional<toml::table> parse(const std::string& path, const char* consequence, std::vector<Complaint>& complaints) {
    const auto complain = [&](std::uint32_t line, std::string_view why) {
        complaints.push_back(
            {.origin = {.file = path, .line = line}, .message = fmt::format("{}; {}", why, consequence)});
    };
    try {
        return toml::parse(readText(path), path);
    } catch (const toml::parse_error& error) {
        complain(error.source().begin.line, fmt::format("this is no TOML: {}", error.description()));
    } catch (const std::system_error& error) {
        complain(0, error.code().message());
    }
    return std::nullopt;
}

void readFile(const std::string& path, const Configuration& inForce, Configuration& configuration) {
    const auto before = std::ranges::find(inForce.files, path, &Configuration::File::path);
    const bool isInForce = before != inForce.files.end();
    const auto table =
        parse(path, isInForce ? "what the file said before goes on" : "the file is left out", configuration.complaints);
    if (!table) {
        if (isInForce)
            configuration.files.push_back(*before);
        return;
    }
    Configuration::File& file = configuration.files.emplace_back();
    file.path = path;
    std::vector<Complaint> complaints;
    FileReader(file, complaints).read(*table);
    std::ranges::stable_sort(complaints, {}, [](const Complaint& complaint) { return complaint.origin.line; });
    std::ranges::move(complaints, std::back_inserter(configuration.complaints));
}

std::vector<std::string> filesOf(const std::filesystem::path& folder) {
    std::error_code ignored; // what is not there is not read; what cannot be read, its reader says
    std::vector<std::string> files;
    for (auto entry = std::filesystem::directory_iterator(folder / "config.d", ignored);
         entry != std::filesystem::directory_iterator(); entry.increment(ignored)) {
        const std::filesystem::path& path = entry->path();
        if (path.extension() == ".toml" && !path.filename().native().starts_with('.'))
            files.push_back(path);
    }
    std::ranges::sort(files);
    const std::filesystem::path first = folder / "config.toml";
    if (std::filesystem::symlink_status(first, ignored).type() != std::filesystem::file_type::not_found)
        files.insert(files.begin(), first);
    return files;
}

// Puts an entry in place of the one that it is the same as.
template <class Entry, class IsSame>
void put(std::vector<Entry>& entries, const Entry& entry, const IsSame& isSame) {
    const auto found = std::ranges::find_if(entries, [&](const Entry& other) { return isSame(entry, other); });
    if (found == entries.end())
        entries.push_back(entry);
    else
        *found = entry;
}

} // namespace

std::string textOf(const Origin& origin) {
    return origin.line == 0 ? origin.file : fmt::format("{}:{}", origin.file, origin.line);
}

std::string nameOf(KeyUse use, PixelRegion region) { return fmt::format("{}.{}", nameOf(use), rowOf(region).place); }

ConfiguredSetting configuredSetting(std::string_view name, Ref<Value> value, Origin origin) {
    ConfiguredSetting setting{.key = fmt::format("{}.{}.{}", Keys::kPipelineDomain, Keys::kAlgsDomain, name),
                              .value = std::move(value),
                              .origin = std::move(origin)};
    const Judgement judgement = judgeWrite(setting.key, setting.value.get());
    if (judgement.verdict == Judgement::Verdict::Unknown && judgement.reason.empty())
        refuse(fmt::format("unknown setting '{}' (one of {} is wanted)", name, fmt::join(settingNames(), ", ")));
    if (judgement.verdict != Judgement::Verdict::Sensible && judgement.verdict != Judgement::Verdict::Doubtful)
        refuse(fmt::format("{}: {}", name, judgement.reason));
    if (settingUnder(setting.key)->row.is<SettingRow::Action>())
        refuse(fmt::format("{}: it is no value that lasts", name));
    return setting;
}

ConfiguredKey configuredKey(std::string_view name, const std::string& key, Origin origin) {
    const auto code = keyCalled(key);
    for (const KeyUseRow& row : kKeyUseRows) {
        for (const RegionRow& region : kRegionsWithPads) {
            if (name != nameOf(row.use, region.region))
                continue;
            if (!code)
                refuse(fmt::format("{}: the name of a key is wanted, such as \"KEY_MUTE\", or \"none\"", name));
            return {.use = row.use, .region = region.region, .key = *code, .origin = std::move(origin)};
        }
    }
    refuse(fmt::format("unknown name '{}' (one of {} is wanted)", name, fmt::join(keyNames(), ", ")));
}

Configuration readConfiguration(const std::filesystem::path& folder, const Configuration& inForce) {
    Configuration configuration;
    for (const std::string& path : filesOf(folder))
        readFile(path, inForce, configuration);
    for (const Configuration::File& file : configuration.files) {
        for (const ConfiguredSetting& setting : file.settings)
            put(configuration.settings, setting, [](const auto& a, const auto& b) { return a.key == b.key; });
        for (const ConfiguredKey& key : file.keys)
            put(configuration.keys, key, isSameUse);
    }
    return configuration;
}

KeyTable keyTableOf(const std::vector<ConfiguredKey>& keys) {
    KeyTable table = kDefaultKeys;
    for (const ConfiguredKey& key : keys)
        keysOf(table, key.region).*key.use = key.key;
    return table;
}

} // namespace VeltoTouch
