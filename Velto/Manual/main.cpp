#include "Velto/Commands/Program.h"
#include "Velto/Manual/Completions.h"
#include "Velto/Manual/Pages.h"
#include "Velto/Output/Files.h"

#include <cstdio>
#include <exception>
#include <filesystem>

#include <fmt/format.h>

// Writes the manual pages and completions of `velto` into a folder; a part of the build.

namespace {

using namespace VeltoTouch::Velto;

void writeDocs(const std::filesystem::path& folder) {
    const Program description = makeProgram();
    const App& program = *description.app;
    const Manual::Release release{.version = VELTO_VERSION, .date = VELTO_DATE};

    const std::filesystem::path pages = folder / "man1";
    std::filesystem::remove_all(pages); // those of subcommands that are no more
    std::filesystem::create_directories(pages);
    writeFile(pages / (program.get_name() + ".1"), Manual::programPage(program, release));
    for (const App* command : program.commands())
        writeFile(pages / fmt::format("{}-{}.1", program.get_name(), command->get_name()),
                  Manual::commandPage(program, *command, release));

    const std::filesystem::path completions = folder / "completions";
    std::filesystem::create_directories(completions);
    writeFile(completions / (program.get_name() + ".bash"), Manual::bashCompletion(program));
    writeFile(completions / ("_" + program.get_name()), Manual::zshCompletion(program));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: velto_docs FOLDER\n", stderr);
        return 2;
    }
    try {
        writeDocs(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velto_docs: %s\n", error.what());
        return 1;
    }
}
