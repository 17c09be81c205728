#include "Plugin/Recording/ContainerWriter.h"
#include "Velto/Analysis/Counted.h"
#include "Velto/Analysis/Recovery.h"
#include "Velto/Commands/Command.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureText.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Analysis::counted;
using Analysis::Recovery;

constexpr std::size_t kMostListed = 10; // stretches, for people

struct RecoverOptions {
    std::string file;
    std::string output;
    bool jsonl = false;
};

std::string asLine(const std::string& file, const Recovery& recovery) {
    std::string text = fmt::format(R"({{"kind":"recovered"{},"version":{},"frames":{},"lost":[)", fileMember(file),
                                   recovery.version, recovery.frames.size());
    const char* separator = "";
    for (const auto& [from, to] : recovery.lost) {
        text += fmt::format(R"({}{{"fromByte":{},"toByte":{}}})", separator, from, to);
        separator = ",";
    }
    return text + "]}\n";
}

std::string asText(const std::string& file, const Recovery& recovery) {
    const std::size_t frames = recovery.frames.size();
    const std::size_t stretches = recovery.lost.size();
    std::string text = coloured(Colour::Bold, printable(file)) + "\n";
    text += fmt::format("  saved {} of version {}\n", counted(frames, "frame"), recovery.version);
    text += stretches == 0 ? "  lost nothing\n"
                           : fmt::format("  lost {} stretch{} of the text\n", stretches, stretches == 1 ? "" : "es");
    for (std::size_t i = 0; i < std::min(recovery.lost.size(), kMostListed); ++i) {
        const auto& [from, to] = recovery.lost[i];
        text += from == to ? fmt::format("    byte {}: the text ends\n", from)
                           : fmt::format("    bytes {} to {}\n", from, to - 1);
    }
    if (recovery.lost.size() > kMostListed)
        text += fmt::format("    ... and {} more\n", recovery.lost.size() - kMostListed);
    return text;
}

int recover(const RecoverOptions& options) {
    Recovery recovery;
    const int status = forEachFile({options.file}, [&](const std::string& file) {
        const Ref<Data> container = readFile(file);
        auto saved = Analysis::recoverFrames(*container);
        if (!saved)
            throw std::runtime_error("no frame can be saved");
        recovery = *std::move(saved);
    });
    if (status != 0)
        return status;
    return forEachFile({options.output}, [&](const std::string& output) {
        PipelineRecording::sortFrames(recovery.frames);
        writeFile(output, writeContainer(recovery.frames));
        writeStandardOutput(options.jsonl ? asLine(options.file, recovery) : asText(options.file, recovery));
    });
}

} // namespace

Command makeRecoverCommand(App& program) {
    const auto options = std::make_shared<RecoverOptions>();
    App* app = program.addCommand("recover", {"velto recover broken.json -o saved.json"},
                                  "Saves what is whole in a damaged recording: every frame before and behind the\n"
                                  "damage. Tells which stretches of the text are lost.");
    addRecording(*app, options->file);
    addOutputFile(*app, options->output, "Where to write the frames that are saved");
    app->add_flag("--jsonl", options->jsonl,
                  "JSON Lines: one that says what was saved and what was lost; toByte is the first byte that is not");
    return {app, [options] { return recover(*options); }};
}

} // namespace VeltoTouch::Velto
