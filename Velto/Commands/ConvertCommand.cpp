#include "Velto/Commands/Command.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <memory>

namespace VeltoTouch::Velto {
namespace {

struct ConvertOptions {
    std::string file;
    std::string output; // empty: standard output
    std::uint64_t maxFrameCount = 0;
};

void addFileOptions(App& app, ConvertOptions& options) {
    addRecording(app, options.file);
    addOutput(app, options.output);
}

// Reads the recording, lets `change` act on it and writes it. Failures are reported under the file they belong to.
int rewrite(const ConvertOptions& options, const std::function<void(PipelineRecording&)>& change) {
    Ref<Data> container;
    const int status = forEachFile({options.file}, [&](const std::string& file) {
        PipelineRecording recording = loadRecording(file);
        change(recording);
        container = recording.json();
    });
    if (status != 0)
        return status;
    return forEachFile({options.output}, [&](const std::string& output) { writeFile(output, container->bytes()); });
}

} // namespace

Command makeConvertCommand(App& program) {
    const auto options = std::make_shared<ConvertOptions>();
    App* app = program.addCommand("convert", {"velto convert old.json -o new.json"},
                                  "Brings a recording of any version to the current one, sorted by\n"
                                  "time, compact.");
    addFileOptions(*app, *options);
    return {app, [options] { return rewrite(*options, [](PipelineRecording&) {}); }};
}

Command makeTrimCommand(App& program) {
    const auto options = std::make_shared<ConvertOptions>();
    App* app = program.addCommand("trim", {"velto trim --max 1000 long.json -o end.json"},
                                  "Keeps the newest frames of a recording and the settings in force\n"
                                  "before them. The result is sorted, of the current version.");
    addFileOptions(*app, *options);
    addNumber(*app, "--max", options->maxFrameCount,
              "How many frames that are no settings to keep; 0 keeps the settings alone")
        ->required();
    return {app, [options] {
                return rewrite(*options,
                               [&](PipelineRecording& recording) { recording.trimFrames(options->maxFrameCount); });
            }};
}

} // namespace VeltoTouch::Velto
