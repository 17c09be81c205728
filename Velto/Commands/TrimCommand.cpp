#include "Velto/Commands/Command.h"
#include "Velto/Commands/Rewriting.h"
#include "Velto/Options/Numbers.h"

#include <memory>

namespace VeltoTouch::Velto {
namespace {

struct TrimOptions {
    RewritingOptions files;
    std::uint64_t maxFrameCount = 0;
};

} // namespace

Command makeTrimCommand(App& program) {
    const auto options = std::make_shared<TrimOptions>();
    App* app = program.addCommand("trim", {"velto trim --max 1000 long.json -o end.json"},
                                  "Keeps the newest frames of a recording and the settings in force\n"
                                  "before them. The result is sorted, of the current version.");
    addRewriting(*app, options->files);
    addNumber(*app, "--max", options->maxFrameCount,
              "How many frames that are no settings to keep; 0 keeps the settings alone")
        ->required();
    return {app, [options] {
                return rewrite(options->files,
                               [&](PipelineRecording& recording) { recording.trimFrames(options->maxFrameCount); });
            }};
}

} // namespace VeltoTouch::Velto
