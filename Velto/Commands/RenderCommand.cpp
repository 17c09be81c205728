#include "Plugin/Shared/ImageText.h"
#include "Velto/Commands/Command.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <memory>
#include <stdexcept>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

struct RenderOptions {
    std::string file;
    bool isFrameWanted = false; // otherwise every frame
    std::uint32_t wantedFrame = 0;
    bool raw = false;
};

void renderFile(const RenderOptions& options, const std::string& file) {
    const PipelineRecording recording = loadRecording(file);
    std::string text;
    std::uint64_t images = 0;
    bool isFrameFound = false;
    for (const Frame& frame : recording.frames()) {
        const auto image = InputReport::Image::parse(frame.report.data(), frame.report.size());
        if (!image)
            continue;
        ++images;
        if (options.isFrameWanted && image->frameNumber != options.wantedFrame)
            continue;
        isFrameFound = true;
        text += Util::stringFromImage(*image, options.raw) + "\n";
        if (text.size() >= kFlushedFrom) {
            writeStandardOutput(text);
            text.clear();
        }
    }
    if (options.isFrameWanted && !isFrameFound)
        throw std::runtime_error(fmt::format("none of the {} images has frame number {}", images, options.wantedFrame));
    writeStandardOutput(text);
}

} // namespace

Command makeRenderCommand(App& program) {
    const auto options = std::make_shared<RenderOptions>();
    App* app = program.addCommand("render", {"velto render --frame 42 gestures.json"},
                                  "Shows images as text pictures, each pad's value where the pad lies.");
    addRecording(*app, options->file);
    addNumber(*app, "--frame", options->wantedFrame, "Only the images with this frame number")
        ->type_name("F")
        ->each([options](const std::string&) { options->isFrameWanted = true; });
    app->add_flag("--raw", options->raw, "Raw values in place of signals");
    return {app, [options] {
                return forEachFile({options->file}, [&](const std::string& file) { renderFile(*options, file); });
            }};
}

} // namespace VeltoTouch::Velto
