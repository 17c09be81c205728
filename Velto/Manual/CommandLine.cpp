#include "Velto/Manual/CommandLine.h"

namespace VeltoTouch::Velto::Manual {

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

} // namespace VeltoTouch::Velto::Manual
