#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Commands/Command.h"
#include "Velto/Options/Jobs.h"
#include "Velto/Output/CSV.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace VeltoTouch::Velto {
namespace {

// In the order of Exported.
constexpr std::array<std::string_view, 4> kTables{"images", "touches", "events", "labels"};

struct ExportOptions {
    std::vector<std::string> paths;
    Exported what = Exported::Images;
    std::string output; // empty: standard output
    std::size_t jobs = 1;
};

std::string rowsOf(const ExportOptions& options, const std::string& file) {
    const PipelineRecording recording = loadRecording(file);
    const Analysis::Track track(recording.frames());
    return csvRows(options.what, {.file = file,
                                  .track = track,
                                  .touches = touchesOf(track, {}),
                                  .labels = Analysis::labelsOf(recording.frames())});
}

// The standard output gets rows as they come; a file appears whole.
int exportAll(const ExportOptions& options) {
    const bool isFile = !isStandardOutput(options.output);
    if (isFile)
        requireWritable(options.output);
    std::string text = csvHeading(options.what);
    const int status = forEachRecordingInOrder(
        options.paths, options.jobs, "exporting", [&](const std::string& file) { return rowsOf(options, file); },
        [&](const std::string&, const std::string& rows) {
            text += rows;
            if (!isFile)
                writeStandardOutput(std::exchange(text, {}));
        });
    if (!isFile) {
        writeStandardOutput(text);
        return status;
    }
    return std::max(status, forEachFile({options.output}, [&](const std::string& file) { writeFile(file, text); }));
}

} // namespace

Command makeExportCommand(App& program) {
    const auto options = std::make_shared<ExportOptions>();
    App* app = program.addCommand("export", {"velto export --what touches recordings/ -o touches.csv"},
                                  "Writes what recordings hold as comma-separated values: one table for all of\n"
                                  "them, for spreadsheets and notebooks.");
    const auto parse = [options](const std::string& name) {
        const auto table = std::ranges::find(kTables, name);
        if (table == kTables.end())
            throw CLI::ValidationError("--what", "images, touches, events or labels is wanted");
        options->what = static_cast<Exported>(table - kTables.begin());
    };
    app->offer(
           app->add_option_function<std::string>("--what", parse, "What a row is: images, touches, events or labels"),
           {.words = {kTables.begin(), kTables.end()}, .openings = {}, .filePrefixes = {}, .patterns = {}})
        ->type_name("TABLE")
        ->required();
    addRecordings(*app, options->paths);
    addOutput(*app, options->output);
    addJobs(*app, options->jobs);
    return {app, [options] { return exportAll(*options); }};
}

} // namespace VeltoTouch::Velto
