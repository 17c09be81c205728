#include "Plugin/Recording/PipelineRecording.h"
#include "Plugin/Shared/Keys.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/ServiceRecording.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <memory>
#include <string>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kRecordText =
    "Saves the recording so far of a surface that velto serve serves; recording goes on.\n"
    "It is for what has just gone wrong on a surface in use; velto capture records from now on.\n"
    "\n"
    "It holds the newest {} reports and accelerometer samples. Only root and the group velto may\n"
    "read it.";

struct RecordOptions {
    ServedChoice served;
    std::string output; // empty: the standard output
};

int record(const RecordOptions& options) {
    const Ref<Value> recording =
        Bus::Client(options.served.bus, options.served.device).getProperty(std::string(Keys::kRecording));
    return forEachFile({options.output}, [&](const std::string& file) {
        const RecordedExtent kept = saveRecording(recording, file);
        if (kept.isFull())
            complain(
                isStandardOutput(file) ? "standard output" : file,
                fmt::format("the recording has reached its bound of {} reports and accelerometer samples and holds "
                            "the newest {:.1f} s",
                            kMaxRecordedFrames, kept.seconds()));
    });
}

} // namespace

Command makeRecordCommand(App& program) {
    const auto options = std::make_shared<RecordOptions>();
    App* app = program.addCommand("record", {"velto record -o gestures.json && velto replay gestures.json"},
                                  fmt::format(kRecordText, kMaxRecordedFrames));
    addServed(*app, options->served);
    addOutput(*app, options->output);
    return {app, [options] { return record(*options); }};
}

} // namespace VeltoTouch::Velto
