#include "Velto/Options/App.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

// Every app that the formatter is given is one of ours.
const App& ours(const CLI::App* app) { return dynamic_cast<const App&>(*app); }

std::string entryText(const HelpList::Entry& entry, std::size_t textColumn) {
    if (textColumn > 0)
        return fmt::format("  {:<{}}{}\n", entry.term, textColumn - 2, entry.text);
    return fmt::format("  {}\n      {}\n", entry.term, CLI::detail::find_and_replace(entry.text, "\n", "\n      "));
}

std::string listText(const HelpList& list) {
    std::string text = list.heading + ":\n";
    for (const HelpList::Entry& entry : list.entries)
        text += entryText(entry, list.textColumn);
    return list.remarks.empty() ? text : text + list.remarks + "\n";
}

// Shows examples, text, usage, arguments, options, subcommands, lists.
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_description(const CLI::App* app) const override {
        std::string text = "Example:\n";
        for (const std::string& example : ours(app).examples())
            text += "  " + example + "\n";
        return text + "\n" + app->get_description() + "\n";
    }
    std::string make_subcommand(const CLI::App* command) const override {
        return fmt::format("  {:<10}{}\n", command->get_name(), ours(command).summary());
    }
    // Which options go with which, the messages say. Dots stand where several values may follow.
    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string text = CLI::Formatter::make_option_opts(option);
        const bool takesOne = option->nonpositional() && !option->get_allow_extra_args();
        return text.substr(0, std::min({text.find(" Needs:"), text.find(" Excludes:"),
                                        takesOne ? text.find(" ...") : std::string::npos}));
    }
    std::string make_footer(const CLI::App* app) const override {
        std::string text;
        for (const HelpList& list : ours(app).lists())
            text += listText(list) + "\n";
        return text;
    }
};

} // namespace

Candidates fileNames() { return {.words = {}, .openings = {}, .filePrefixes = {""}, .patterns = {}}; }

Candidates hidrawNodes() { return {.words = {}, .openings = {}, .filePrefixes = {}, .patterns = {"/dev/hidraw*"}}; }

App::App(const std::string& name, std::vector<std::string> examples, const std::string& text)
    : CLI::App(text, name), _examples(std::move(examples)) {
    formatter(std::make_shared<HelpFormatter>());
}

App::App(const std::string& name, std::vector<std::string> examples, const std::string& text, App& program)
    : CLI::App(text, name, &program), _examples(std::move(examples)) {}

App* App::addCommand(const std::string& name, std::vector<std::string> examples, const std::string& text) {
    const std::shared_ptr<App> command(new App(name, std::move(examples), text, *this));
    add_subcommand(command);
    _commands.push_back(command.get());
    return command.get();
}

CLI::Option* App::offer(CLI::Option* option, Candidates candidates) {
    _candidates[option] = std::move(candidates);
    return option;
}

Candidates App::candidatesFor(const CLI::Option& option) const {
    const auto found = _candidates.find(&option);
    return found == _candidates.end() ? Candidates{} : found->second;
}

std::string App::summary() const {
    std::string line = get_description().substr(0, get_description().find("\n\n"));
    std::ranges::replace(line, '\n', ' ');
    for (const char* const end : {". ", ": ", "; "})
        line.erase(std::min(line.find(end), line.size()));
    if (line.ends_with('.'))
        line.pop_back();
    return line;
}

} // namespace VeltoTouch::Velto
