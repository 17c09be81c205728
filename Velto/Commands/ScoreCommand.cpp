#include "Velto/Analysis/Counted.h"
#include "Velto/Analysis/ScoreLines.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/PagePlay.h"
#include "Velto/Commands/ReportPictures.h"
#include "Velto/Commands/ScoreShards.h"
#include "Velto/Options/Jobs.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/ScoreText.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Page/ReportPage.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

struct ScoreOptions {
    std::vector<std::string> paths;
    std::vector<Setting> settings;
    std::size_t jobs = 1;
    std::optional<double> leastRecall;
    std::uint64_t mostFalse = std::numeric_limits<std::uint64_t>::max();
    std::optional<Shard> shard;
    bool merge = false;
    bool jsonl = false;
    std::string page; // empty: none
};

// A recording's score, and itself if pictures of it are wanted and it cannot be read again.
struct Scored {
    RecordingScore score;
    std::shared_ptr<PipelineRecording> recording = {};
};

Scored score(const ScoreOptions& options, const std::string& file) {
    Scored scored;
    try {
        PipelineRecording recording = loadRecording(file);
        const Track track(recording.frames());
        scored.score = scoreOf(labelsOf(recording.frames()), touchesOf(track, options.settings));
        scored.score.durationNs = track.durationNs();
        scored.score.file = file;
        if (!options.page.empty())
            scored.recording = keptForPictures(file, std::move(recording));
    } catch (const std::exception& error) {
        scored.score = {.file = file, .error = messageOf(error)};
    }
    return scored;
}

// Prints recordings as they come, and the total at the end.
class ScoreOutput {
public:
    explicit ScoreOutput(const ScoreOptions& options) : _options(options), _pictures({options.settings}) {}

    void add(Scored scored) {
        const RecordingScore& recording = scored.score;
        _total.add(recording);
        std::string text;
        if (_options.jsonl)
            appendScoreLines(text, recording);
        else
            text = faultLines(recording);
        writeStandardOutput(text);
        if (!recording.error.empty())
            complain(recording.file, recording.error);
        if (!_options.page.empty())
            addCases(recording);
        _pictures.keep(recording.file, std::move(scored.recording));
    }

    // Returns the exit status.
    [[nodiscard]] int finish(const std::optional<Shard>& shard) {
        std::string text;
        if (_options.jsonl)
            appendTotalLine(text, _total, shard);
        else
            text = totalText(_total);
        writeStandardOutput(text);
        const int drawn = _options.merge ? 0 : _pictures.draw(_groups, _options.jobs);
        const int written = writePage(_options.page, [this] { return page(); });
        return std::max({drawn, written, keepsItsBounds() && _total.failed() == 0 ? 0 : 1});
    }

private:
    // Of results that are merged nobody knows with which settings they came about: they have no command.
    void addCases(const RecordingScore& recording) {
        std::vector<Page::Case> cases;
        for (const Fault& fault : faultsOf(recording)) {
            const Page::Range time{.fromNs = fault.startNs, .toNs = fault.endNs};
            cases.push_back(
                {.kind = std::string(fault.kind),
                 .file = recording.file,
                 .texts = {fault.meant, fault.cause},
                 .time = time,
                 .touches = {fault.touch.value_or(0)},
                 .command = _options.merge ? "" : plotCommand(recording.file, _options.settings, {}, time)});
        }
        _groups[1].add(std::move(cases));
        if (!recording.error.empty())
            _groups[0].add({{.kind = "not read", .file = recording.file, .texts = {recording.error}}});
    }

    [[nodiscard]] std::string page() {
        if (_total.failed() == 0)
            _groups.erase(_groups.begin());
        return Page::reportPage(
            {.title = "Score",
             .text = totalSentences(_total) + "  " + std::string(Page::kOrder),
             .table = _total.counts().labels == 0 ? std::vector<std::vector<std::string>>() : countRows(_total),
             .groups = _groups});
    }

    [[nodiscard]] bool keepsItsBounds() const {
        if (_options.leastRecall && !_options.shard && _total.meant() == 0) { // a part may have none
            complain("score", "no tap, hold or slide was meant, so there is no recall");
            return false;
        }
        if (_options.leastRecall && _total.recall() < *_options.leastRecall) {
            complain("score", fmt::format("recall {} is below {}", _total.recall(), *_options.leastRecall));
            return false;
        }
        if (_total.falseGestures() > _options.mostFalse) {
            complain("score", fmt::format("{} {} more than {}", counted(_total.falseGestures(), "false gesture"),
                                          _total.falseGestures() == 1 ? "is" : "are", _options.mostFalse));
            return false;
        }
        return true;
    }

    const ScoreOptions& _options;
    ScoreTotal _total;
    ReportPictures _pictures;
    std::vector<Page::Group> _groups{Page::Group("Not read"), Page::Group("What went wrong")};
};

int scoreRecordings(const ScoreOptions& options) {
    warnOfDoubtfulSettings(options.settings);
    preparePage(options.page);
    std::vector<std::string> files;
    const int found = findRecordings(options.paths, files);
    std::optional<Shard> shard = options.shard;
    if (shard) {
        shard->run = runOf(files, options.settings);
        std::size_t place = 0;
        std::erase_if(files, [&](const std::string&) { return place++ % shard->of != shard->number - 1; });
    }
    ScoreOutput output(options);
    const int handled = handleInOrder(
        files, options.jobs, "scoring", [&](const std::string& file) { return score(options, file); },
        [&](const std::string&, Scored scored) { output.add(std::move(scored)); });
    return std::max({found, handled, output.finish(shard)});
}

int mergeShards(const ScoreOptions& options) {
    preparePage(options.page);
    std::vector<RecordingScore> recordings;
    if (const int status = readShards(options.paths, recordings); status != 0)
        return status;
    ScoreOutput output(options);
    for (RecordingScore& recording : recordings)
        output.add({.score = std::move(recording)});
    return output.finish(std::nullopt);
}

void addBounds(App& app, ScoreOptions& options) {
    const auto parseShare = [&options](const std::string& text) {
        const auto share = numberIn<double>(text);
        if (!share || *share < 0 || *share > 1)
            throw CLI::ValidationError("--min-recall", "a number from 0 to 1 is wanted");
        options.leastRecall = *share;
    };
    app.add_option_function<std::string>("--min-recall", parseShare,
                                         "Exit status 1 if less than this share of what was meant is found")
        ->type_name("R");
    addNumber(app, "--max-false", options.mostFalse, "Exit status 1 if there are more false and stray gestures");
}

// What would have no effect on results that are there is wrong usage.
void addShards(App& app, ScoreOptions& options, CLI::Option* settings, CLI::Option* jobs) {
    CLI::Option* shard = app.add_option_function<std::string>(
        "--shard", [&options](const std::string& text) { options.shard = parseShard(text); },
        "Only every N-th recording, from the K-th on; for batch engines");
    shard->type_name("K/N");
    app.add_flag("--merge", options.merge, "PATHs are the --jsonl results of all shards; print what one run would")
        ->excludes(shard)
        ->excludes(settings)
        ->excludes(jobs);
}

} // namespace

Command makeScoreCommand(App& program) {
    const auto options = std::make_shared<ScoreOptions>();
    App* app = program.addCommand(
        "score", {"velto score recordings/", "velto score recordings/ --min-recall 0.98 --max-false 5"},
        "Compares the gestures of labelled recordings with what was meant: what was\n"
        "found, missed, wrong or false, and how long the decisions took.\n"
        "\n"
        "A touch counts for the label with which it shares most time, from 50 ms before\n"
        "the label to 150 ms after it, and of equals for the first one: gestures that are\n"
        "less than 200 ms apart can be taken for each other. What is in the time of a\n"
        "label \"spoiled\" counts for nothing.\n"
        "\n"
        "A page of --html has pictures of the 500 worst faults: those of the recordings\n"
        "with most of them. With --merge, where no recording is at hand, it has none.");
    addRecordings(*app, options->paths);
    CLI::Option* settings = addPlayedSettings(*app, options->settings);
    CLI::Option* jobs = addJobs(*app, options->jobs);
    addBounds(*app, *options);
    addShards(*app, *options, settings, jobs);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines");
    addPage(*app, options->page);
    return {app, [options] { return options->merge ? mergeShards(*options) : scoreRecordings(*options); }};
}

} // namespace VeltoTouch::Velto
