#include "Velto/Commands/Command.h"
#include "Velto/Commands/Rewriting.h"

#include <memory>

namespace VeltoTouch::Velto {

Command makeConvertCommand(App& program) {
    const auto options = std::make_shared<RewritingOptions>();
    App* app = program.addCommand("convert", {"velto convert old.json -o new.json"},
                                  "Brings a recording of any version to the current one, sorted by\n"
                                  "time, compact.");
    addRewriting(*app, *options);
    return {app, [options] { return rewrite(*options, [](PipelineRecording&) {}); }};
}

} // namespace VeltoTouch::Velto
