#include "Velto/Manual/CommandLine.h"

#include "Velto/Options/Description.h"
#include "Velto/Options/Keys.h"
#include "Velto/Options/Suggestion.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Velto::Manual {
namespace {

constexpr std::array<std::string_view, 3> kFileTypes{"FILE", "OUT", "PATH"};
constexpr std::string_view kDeviceType = "DEVICE";
constexpr const char* kDevices = "/dev/hidraw*"; // where the help does not list them

bool isCapital(char character) { return character >= 'A' && character <= 'Z'; }
bool isSmall(char character) { return character >= 'a' && character <= 'z'; }

struct Placeholder {
    std::size_t begin;
    std::size_t length;
};

// The first run of capitals that begins no word in small letters.
std::optional<Placeholder> findPlaceholder(std::string_view term) {
    for (auto begin = term.begin(); (begin = std::find_if(begin, term.end(), isCapital)) != term.end();) {
        const auto end = std::find_if_not(begin, term.end(), isCapital);
        if (end == term.end() || !isSmall(*end))
            return Placeholder{.begin = static_cast<std::size_t>(begin - term.begin()),
                               .length = static_cast<std::size_t>(end - begin)};
        begin = end;
    }
    return std::nullopt;
}

std::vector<std::string> split(std::string_view text, std::string_view separators) {
    std::vector<std::string> pieces;
    for (;;) {
        const auto end = text.find_first_of(separators);
        pieces.emplace_back(CLI::detail::trim_copy(std::string(text.substr(0, end))));
        if (end == std::string_view::npos)
            return pieces;
        text.remove_prefix(end + 1);
    }
}

// What "WHERE is this, that or ..." gives for WHERE: this and that.
std::vector<std::string> wordsFor(std::string_view placeholder, const std::string& remarks) {
    const std::string beginning = fmt::format("{} is ", placeholder);
    const auto at = remarks.find(beginning);
    if (at == std::string::npos)
        return {};
    const std::string_view choices = std::string_view(remarks).substr(at + beginning.size());
    std::vector<std::string> words = split(choices.substr(0, choices.find(" or ")), ",");
    std::erase_if(words, [](const std::string& word) {
        return word.empty() || !std::ranges::all_of(word, [](char c) { return isSmall(c) || c == '-'; });
    });
    return words;
}

// A term of a list; what may be left out (in brackets) is.
void addTerm(Candidates& candidates, std::string_view term, const std::string& remarks) {
    term = term.substr(0, term.find('['));
    const auto found = findPlaceholder(term);
    if (!found) {
        candidates.words.emplace_back(term);
        return;
    }
    const std::string prefix(term.substr(0, found->begin));
    const std::string_view placeholder = term.substr(found->begin, found->length);
    const std::vector<std::string> words = wordsFor(placeholder, remarks);
    for (const std::string& word : words) {
        if (prefix.find(word) == std::string::npos) // another one each time
            addTerm(candidates, prefix + word + std::string(term.substr(found->begin + found->length)), remarks);
    }
    if (!words.empty() || prefix.empty())
        return;
    if (std::ranges::count(kFileTypes, placeholder) > 0)
        candidates.filePrefixes.push_back(prefix);
    else if (prefix.starts_with('/'))
        candidates.patterns.push_back(prefix + "*");
    else
        candidates.openings.push_back(prefix);
}

constexpr std::string_view kAnyFactor = ".N";

// A key that a word completes, or one of factors, which goes on with a number.
void addKey(Candidates& candidates, const std::string& key, const std::string& end) {
    if (key.ends_with(kAnyFactor))
        candidates.openings.push_back(key.substr(0, key.size() - 1));
    else
        (end.empty() ? candidates.words : candidates.openings).push_back(key + end);
}

// What completes "KEY", "KEY=VALUE" or "COMMAND".
void addNames(Candidates& candidates, const std::string& type, const CLI::App& app) {
    if (type == "KEY") {
        for (const std::string& key : readableKeys())
            addKey(candidates, key, "");
    } else if (type == "KEY=VALUE") {
        for (const std::string& key : writableKeys())
            addKey(candidates, key, "=");
    } else if (type == "COMMAND") {
        candidates.words = commandNames(*app.get_parent());
    }
}

bool isListOf(const HelpList& list, const std::string& type) {
    return CLI::detail::to_lower(list.heading) == CLI::detail::to_lower(type) + "s";
}

} // namespace

std::vector<const CLI::App*> subcommandsOf(const CLI::App& program) {
    return program.get_subcommands([](const CLI::App* app) { return !app->get_group().empty(); });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
    return app.get_options(
        [](const CLI::Option* option) { return option->nonpositional() && !option->get_group().empty(); });
}

std::vector<const CLI::Option*> argumentsOf(const CLI::App& app) {
    return app.get_options(
        [](const CLI::Option* option) { return option->get_positional() && !option->get_group().empty(); });
}

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

std::string typeOf(const CLI::Option& option) {
    if (!option.nonpositional())
        return option.get_name(true);
    return option.get_type_size() == 0 ? "" : option.get_type_name();
}

bool isRepeated(const CLI::Option& option) { return option.get_expected_max() > 1; }

Candidates candidatesFor(const CLI::App& app, const CLI::Option& option) {
    Candidates candidates;
    const std::vector<HelpList> lists = parseFooter(app.get_footer());
    for (const std::string& type : split(typeOf(option), "|:{},")) {
        if (type.empty())
            continue;
        addNames(candidates, type, app);
        if (std::ranges::count(kFileTypes, type) > 0)
            candidates.filePrefixes.emplace_back();
        else if (std::ranges::none_of(type, isCapital))
            candidates.words.push_back(type);
        const auto list = std::ranges::find_if(lists, [&](const HelpList& each) { return isListOf(each, type); });
        if (list != lists.end()) {
            for (const HelpList::Entry& entry : list->entries)
                addTerm(candidates, entry.term, list->remarks);
        } else if (type == kDeviceType) {
            candidates.patterns.emplace_back(kDevices);
        }
    }
    return candidates;
}

} // namespace VeltoTouch::Velto::Manual
