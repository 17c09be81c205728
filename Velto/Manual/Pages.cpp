#include "Velto/Manual/Pages.h"

#include "Velto/Manual/CommandLine.h"
#include "Velto/Manual/Roff.h"

#include <cctype>

#include <fmt/format.h>

namespace VeltoTouch::Velto::Manual {
namespace {

constexpr const char* kSeeAlsoAll = "org.velto.Touch1";

std::string pageOf(const App& program, const App& command) { return program.get_name() + "-" + command.get_name(); }

std::string reference(std::string_view page, int section) { return fmt::format("{}({})", bold(page), section); }

// "-o OUT", "--set KEY=VALUE".
std::string optionMarkup(const CLI::Option& option, std::string_view blank) {
    std::string markup;
    for (const std::string& name : namesOf(option)) {
        markup += markup.empty() ? "" : ", ";
        markup += bold(name);
    }
    const std::string type = typeOf(option);
    return type.empty() ? markup : fmt::format("{}{}{}", markup, blank, italic(type));
}

// In the synopsis, without a line's end within.
std::string usageMarkup(const CLI::Option& option) {
    const std::string markup = option.nonpositional() ? optionMarkup(option, "\\ ") : italic(option.get_name(true));
    return fmt::format("{}{}", option.get_required() ? markup : "[" + markup + "]", isRepeated(option) ? "...\\&" : "");
}

void addName(Roff& page, std::string_view name, std::string summary) {
    if (!summary.empty())
        summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
    page.section("Name");
    page.line(fmt::format("{} \\- {}", escaped(name), escaped(summary)));
}

void addCommandSynopsis(Roff& page, const App& program, const App& command) {
    page.section("Synopsis");
    page.line(bold(program.get_name() + " " + command.get_name()));
    for (const CLI::Option* option : optionsOf(command)) {
        if (option != command.get_help_ptr())
            page.line(usageMarkup(*option));
    }
    for (const CLI::Option* argument : argumentsOf(command))
        page.line(usageMarkup(*argument));
}

void addOptions(Roff& page, const App& app) {
    const std::vector<const CLI::Option*> arguments = argumentsOf(app);
    if (!arguments.empty())
        page.section("Arguments");
    for (const CLI::Option* argument : arguments)
        page.item(italic(argument->get_name(true)), argument->get_description());
    page.section("Options");
    for (const CLI::Option* option : optionsOf(app))
        page.item(optionMarkup(*option, " "), option->get_description());
}

void addLists(Roff& page, const App& app) {
    for (const HelpList& list : app.lists()) {
        page.section(list.heading);
        for (const HelpList::Entry& entry : list.entries)
            page.item(bold(entry.term), entry.text);
        page.paragraphs(list.remarks);
    }
}

void addExamples(Roff& page, const App& app) {
    page.section("Examples");
    page.literal(app.examples());
}

void addCommonSections(Roff& page) {
    page.section("Exit status");
    page.item(bold("0"), "All was done.");
    page.item(bold("1"), "Something failed and was reported on standard error; the other files were still processed.");
    page.item(bold("2"), "Wrong usage.");
    page.section("Environment");
    page.item(bold("VELTO_LOG"), "LEVEL or LEVEL:FILE: what is logged, and where. LEVEL is debug (each frame is "
                                 "described), default, error (where it is not set) or off; without a FILE lines go to "
                                 "standard error.");
    page.item(bold("NO_COLOR"), "Where it is set and not empty, nothing is shown in colours.");
}

// All pages but one's own.
void addSeeAlso(Roff& page, const App& program, const App& own) {
    page.section("See also");
    if (&own != &program)
        page.line(reference(program.get_name(), 1) + ",");
    for (const App* command : program.commands()) {
        if (command != &own)
            page.line(reference(pageOf(program, *command), 1) + ",");
    }
    page.line(reference(kSeeAlsoAll, 5));
}

// By what they are for, as in the help.
void addSubcommands(Roff& page, const App& program) {
    page.section("Subcommands");
    std::string purpose;
    for (const App* command : program.commands()) {
        if (command->get_group() != purpose)
            page.subsection(purpose = command->get_group());
        page.item(bold(command->get_name()),
                  fmt::format("{}; see {}(1).", command->summary(), pageOf(program, *command)));
    }
}

// What every page goes on with behind its own description.
void addRest(Roff& page, const App& program, const App& own) {
    addOptions(page, own);
    addLists(page, own);
    addCommonSections(page);
    addExamples(page, own);
    addSeeAlso(page, program, own);
}

} // namespace

std::string programPage(const App& program, const Release& release) {
    Roff page(program.get_name(), release.date, program.get_name() + " " + release.version);
    addName(page, program.get_name(), program.summary());
    page.section("Synopsis");
    page.line(fmt::format("{} {} [{}]...", bold(program.get_name()), italic("SUBCOMMAND"), italic("OPTION")));
    page.section("Description");
    page.paragraphs(program.get_description());
    addSubcommands(page, program);
    addRest(page, program, program);
    return page.text();
}

std::string commandPage(const App& program, const App& command, const Release& release) {
    const std::string name = pageOf(program, command);
    Roff page(name, release.date, program.get_name() + " " + release.version);
    addName(page, name, command.summary());
    addCommandSynopsis(page, program, command);
    page.section("Description");
    page.paragraphs(command.get_description());
    addRest(page, program, command);
    return page.text();
}

} // namespace VeltoTouch::Velto::Manual
