#include "Velto/Commands/Command.h"
#include "Velto/Commands/PagePlay.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Page/RecordingPage.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <memory>
#include <optional>
#include <stdexcept>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

struct PlotOptions {
    std::string file;
    std::string second; // empty: none
    std::vector<Setting> settings;
    std::vector<Setting> b; // of the second play, beyond those of both
    std::optional<HostTime> from;
    std::optional<HostTime> to;
    bool wouldBe = false;
    std::string output; // empty: standard output

    [[nodiscard]] std::vector<Setting> secondSettings() const {
        std::vector<Setting> both;
        std::ranges::copy_if(settings, std::back_inserter(both), [this](const Setting& setting) {
            return std::ranges::find(b, setting.key, &Setting::key) == b.end();
        });
        both.insert(both.end(), b.begin(), b.end());
        return both;
    }
};

void requireOneSecondPlay(const PlotOptions& options) {
    if (!options.second.empty() && !options.b.empty())
        throw CLI::ValidationError("--b", "there is a second play already: SECOND");
    if (options.from && options.to && *options.from >= *options.to)
        throw CLI::ValidationError("--to", "a later time than that of --from is wanted");
}

Page::Range rangeOf(const PlotOptions& options) {
    Page::Range range;
    if (options.from)
        range.fromNs = options.from->count();
    if (options.to)
        range.toNs = options.to->count();
    return range;
}

// Throws std::runtime_error if nothing of a recording is shown.
void requireSomethingShown(const PlotOptions& options, const PipelineRecording& recording) {
    const std::list<Frame>& frames = recording.frames();
    const std::uint64_t endNs = frames.empty() ? 0 : frames.back().timestampNs - frames.front().timestampNs;
    if (options.from && options.from->count() > 0 && options.from->count() >= endNs)
        throw std::runtime_error(fmt::format("nothing is to be shown from {} s on: the recording ends at {:.3f} s",
                                             Seconds(*options.from).count(), static_cast<double>(endNs) / 1e9));
}

int plot(const PlotOptions& options) {
    warnOfDoubtfulSettings(options.settings);
    warnOfDoubtfulSettings(options.b);
    leaveOutColours();
    if (!isStandardOutput(options.output))
        preparePage(options.output);
    const auto shown = options.wouldBe ? std::optional(rangeOf(options)) : std::nullopt;
    std::list<PipelineRecording> recordings;
    std::vector<Page::Play> plays;
    std::string page;
    std::vector<std::string> files{options.file};
    if (!options.second.empty())
        files.push_back(options.second);
    const int status = forEachFile(files, [&](const std::string& file) {
        PipelineRecording& recording = recordings.emplace_back(loadRecording(file));
        requireSomethingShown(options, recording);
        plays.push_back(playForPage(file, recording, options.settings, shown));
        if (!options.b.empty())
            plays.push_back(playForPage(file, recording, options.secondSettings(), shown));
        if (recordings.size() == files.size())
            page = Page::recordingPage(plays, rangeOf(options));
    });
    if (status != 0)
        return status;
    return forEachFile({options.output}, [&page](const std::string& output) { writeFile(output, page); });
}

} // namespace

Command makePlotCommand(App& program) {
    const auto options = std::make_shared<PlotOptions>();
    App* app = program.addCommand("plot",
                                  {"velto plot gestures.json -o gestures.html",
                                   "velto plot gestures.json --b Pipeline.Algs.ActivationThreshold=160 -o both.html"},
                                  "Draws a recording as a page for a browser: the pads over time, what the\n"
                                  "recognizer made of them, and why each touch became what it became.\n"
                                  "\n"
                                  "The page is one file that asks no network for anything. A second recording, or\n"
                                  "the same with other settings, lies over the first.");
    addRecording(*app, options->file);
    app->offer(app->add_option("SECOND", options->second, "A recording that lies over it"), fileNames())->type_name("");
    addPlayedSettings(*app, options->settings);
    addSettings(*app, options->b, KeyScope::Pipeline,
                "A setting of a second play, beyond those of --set; may be given several times", "--b")
        ->allow_extra_args(false);
    addSeconds(*app, "--from", options->from, "Show nothing before this time of the recording");
    addSeconds(*app, "--to", options->to, "Show nothing after this time of the recording");
    app->add_flag("--would-be", options->wouldBe, "Find for every touch shown the settings that would change it");
    addOutput(*app, options->output)->description("Where to write the page")->required();
    app->callback([options] { requireOneSecondPlay(*options); });
    return {app, [options] { return plot(*options); }};
}

} // namespace VeltoTouch::Velto
