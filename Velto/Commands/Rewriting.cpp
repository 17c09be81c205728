#include "Velto/Commands/Rewriting.h"

#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

namespace VeltoTouch::Velto {

void addRewriting(App& app, RewritingOptions& options) {
    addRecording(app, options.file);
    addOutput(app, options.output);
}

int rewrite(const RewritingOptions& options, const std::function<void(PipelineRecording&)>& change) {
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

} // namespace VeltoTouch::Velto
