#include "Velto/Daemon/Configuration.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/KeyNames.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
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

// What is wrong at a place; caught where the next line is read.
struct Wrong {
    std::uint32_t line;
    std::string message;
};

std::uint32_t lineOf(const toml::source_region& source) noexcept { return source.begin.line; }
std::uint32_t lineOf(const toml::node& node) noexcept { return lineOf(node.source()); }

const toml::table& tableAt(const toml::node& node, std::string_view name) {
    if (const toml::table* table = node.as_table())
        return *table;
    throw Wrong{.line = lineOf(node), .message = fmt::format("{}: a table is wanted", name)};
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

std::vector<std::string_view> settingNames() {
    std::vector<std::string_view> names;
    for (const SettingRow& row : kSettingRows) {
        if (!row.is<SettingRow::Action>())
            names.push_back(row.key);
    }
    return names;
}

// The members of one file.
class FileReader {
public:
    FileReader(Configuration::File& file, std::vector<Complaint>& complaints) : _file(file), _complaints(complaints) {}

    void read(const toml::table& root) {
        forEachMember(root, [this](std::string_view name, const toml::key& key, const toml::node& node) {
            if (name == kRecognizer)
                readSettings(tableAt(node, name), "");
            else if (name == kKeys)
                readUses(tableAt(node, name));
            else
                throw Wrong{.line = lineOf(key.source()),
                            .message =
                                fmt::format("unknown name '{}' ([{}] and [{}] are wanted)", name, kRecognizer, kKeys)};
        });
    }

private:
    [[nodiscard]] Origin at(std::uint32_t line) const { return {.file = _file.path, .line = line}; }

    template <class Handle>
    void forEachMember(const toml::table& table, const Handle& handle) {
        for (const auto& [key, node] : table) {
            try {
                handle(key.str(), key, node);
            } catch (const Wrong& wrong) {
                _complaints.push_back({.origin = at(wrong.line), .message = wrong.message});
            }
        }
    }

    // A factor's number is the key of a table of its own.
    void readSettings(const toml::table& table, const std::string& prefix) {
        forEachMember(table, [&](std::string_view key, const toml::key& /*key*/, const toml::node& node) {
            const std::string name = prefix + std::string(key);
            if (const toml::table* factors = node.as_table())
                readSettings(*factors, name + ".");
            else
                readSetting(name, node);
        });
    }

    void readSetting(const std::string& name, const toml::node& node) {
        const auto wrong = [&](std::string message) {
            return Wrong{.line = lineOf(node), .message = std::move(message)};
        };
        ConfiguredSetting setting{.key = fmt::format("{}.{}.{}", Keys::kPipelineDomain, Keys::kAlgsDomain, name),
                                  .value = valueAt(node),
                                  .origin = at(lineOf(node))};
        const Judgement judgement = judgeWrite(setting.key, setting.value.get());
        const auto found = settingUnder(setting.key);
        if (found && found->row.is<SettingRow::Action>())
            throw wrong(fmt::format("{}: it is no value that lasts", name));
        if (judgement.verdict == Judgement::Verdict::Unknown && judgement.reason.empty())
            throw wrong(
                fmt::format("unknown setting '{}' (one of {} is wanted)", name, fmt::join(settingNames(), ", ")));
        const bool isDoubtful = judgement.verdict == Judgement::Verdict::Doubtful;
        if (isDoubtful || judgement.verdict == Judgement::Verdict::Sensible)
            _file.settings.push_back(std::move(setting));
        if (!judgement.reason.empty())
            throw wrong(fmt::format("{}: {}", name, judgement.reason));
    }

    void readUses(const toml::table& table) {
        forEachMember(table, [this](std::string_view name, const toml::key& key, const toml::node& node) {
            const auto* const row = std::ranges::find(kKeyUseRows, name, &KeyUseRow::name);
            if (row == kKeyUseRows.end())
                throw Wrong{.line = lineOf(key.source()),
                            .message = fmt::format("unknown gesture '{}' (one of {} is wanted)", name,
                                                   fmt::join(names(kKeyUseRows, &KeyUseRow::name), ", "))};
            readKeys(*row, tableAt(node, fmt::format("{}.{}", kKeys, name)));
        });
    }

    void readKeys(const KeyUseRow& use, const toml::table& table) {
        forEachMember(table, [&](std::string_view place, const toml::key& key, const toml::node& node) {
            const auto row = std::ranges::find(kRegionsWithPads, place, &RegionRow::place);
            if (row == kRegionsWithPads.end())
                throw Wrong{.line = lineOf(key.source()),
                            .message = fmt::format("unknown region '{}' (one of {} is wanted)", place,
                                                   fmt::join(names(kRegionsWithPads, &RegionRow::place), ", "))};
            _file.keys.push_back({.use = use.use,
                                  .region = row->region,
                                  .key = keyAt(node, fmt::format("{}.{}", use.name, place)),
                                  .origin = at(lineOf(node))});
        });
    }

    static std::uint16_t keyAt(const toml::node& node, const std::string& name) {
        const auto text = node.value_exact<std::string>();
        if (const auto key = text ? keyCalled(*text) : std::nullopt)
            return *key;
        throw Wrong{.line = lineOf(node),
                    .message = fmt::format("{}: the name of a key is wanted, such as \"KEY_MUTE\", or \"none\"", name)};
    }

    template <class Rows, class Row>
    static std::vector<std::string_view> names(const Rows& rows, std::string_view Row::*member) {
        std::vector<std::string_view> found;
        std::ranges::transform(rows, std::back_inserter(found), member);
        return found;
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
        complain(lineOf(error.source()), fmt::format("this is no TOML: {}", error.description()));
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
    FileReader(file, configuration.complaints).read(*table);
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

Configuration readConfiguration(const std::filesystem::path& folder, const Configuration& inForce) {
    Configuration configuration;
    for (const std::string& path : filesOf(folder))
        readFile(path, inForce, configuration);
    for (const Configuration::File& file : configuration.files) {
        for (const ConfiguredSetting& setting : file.settings)
            put(configuration.settings, setting, [](const auto& a, const auto& b) { return a.key == b.key; });
        for (const ConfiguredKey& key : file.keys)
            put(configuration.keys, key,
                [](const auto& a, const auto& b) { return a.use == b.use && a.region == b.region; });
    }
    return configuration;
}

KeyTable keyTableOf(const Configuration& configuration) {
    KeyTable table = kDefaultKeys;
    for (const ConfiguredKey& key : configuration.keys)
        keysOf(table, key.region).*key.use = key.key;
    return table;
}

} // namespace VeltoTouch
