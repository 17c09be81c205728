#include "Velto/Analysis/Comparison.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Commands/Command.h"
#include "Velto/Options/Jobs.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Output/ComparisonText.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Output/TouchReader.h"

#include <map>
#include <memory>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

struct Options {
    std::vector<std::string> paths;
    std::vector<Setting> a;
    std::vector<Setting> b;
    std::size_t jobs = 1;
    bool jsonl = false;

    [[nodiscard]] bool wantsResults() const noexcept { return a.empty() && b.empty(); }
};

// What became of one recording in two plays.
struct Plays {
    LabelledTouches a = {};
    LabelledTouches b = {};
};

Plays play(const Options& options, const std::string& file) {
    const PipelineRecording recording = loadRecording(file);
    const Track track(recording.frames());
    const std::vector<Label> labels = labelsOf(recording.frames());
    return {.a = labelled(labels, touchesOf(track, options.a)), .b = labelled(labels, touchesOf(track, options.b))};
}

// Prints recordings as they come, and the counts at the end.
class Output {
public:
    explicit Output(bool jsonl) : _jsonl(jsonl) {}

    void add(const std::string& file, const Plays& plays) {
        const std::vector<ComparedTouch> touches = compare(plays.a, plays.b);
        for (const ComparedTouch& touch : touches)
            ++_counts[static_cast<std::size_t>(touch.change)];
        std::string text;
        (_jsonl ? appendChangeLines : appendChangeText)(text, file, touches);
        writeStandardOutput(text);
    }

    void finish() const { writeStandardOutput(_jsonl ? comparisonLine(_counts) : comparisonText(_counts)); }

private:
    const bool _jsonl;
    ChangeCounts _counts{};
};

int compareSettings(const Options& options) {
    Output output(options.jsonl);
    const int status = forEachRecordingInOrder(
        options.paths, options.jobs, "comparing", [&](const std::string& file) { return play(options, file); },
        [&](const std::string& file, const Plays& plays) { output.add(file, plays); });
    output.finish();
    return status;
}

// Recordings of two results, in the order in which their files are first met.
class Results {
public:
    void read(const std::string& path, LabelledTouches Plays::*side) {
        bool hasTouch = false;
        forEachLine(path, [&](std::string_view line) {
            auto touch = readTouchLine(line);
            if (!touch)
                return;
            hasTouch = true;
            LabelledTouches& touches = playsOf(touch->file).*side;
            touches.isLabelled |= touch->label.has_value();
            touches.touches.push_back(std::move(touch->touch));
            touches.labels.push_back(std::move(touch->label));
        });
        if (!hasTouch) // as of recordings without any, or of a command that failed
            complain(path, "no touch is in it");
    }

    [[nodiscard]] const std::vector<std::pair<std::string, Plays>>& recordings() const noexcept { return _recordings; }

private:
    Plays& playsOf(const std::string& file) {
        const auto [place, isNew] = _places.try_emplace(file, _recordings.size());
        if (isNew)
            _recordings.emplace_back(file, Plays());
        return _recordings[place->second].second;
    }

    std::vector<std::pair<std::string, Plays>> _recordings;
    std::map<std::string, std::size_t> _places;
};

int compareResults(const Options& options) {
    if (options.paths.size() != 2) {
        complain("compare", "--a or --b is wanted, or two results of velto explain --jsonl");
        return kWrongUsage;
    }
    if (options.paths[0] == "-" && options.paths[1] == "-") {
        complain("compare", "the standard input can be one of the two results, not both");
        return kWrongUsage;
    }
    Results results;
    LabelledTouches Plays::*side = &Plays::a;
    const int status = forEachFile(
        options.paths, [&](const std::string& path) { results.read(path, std::exchange(side, &Plays::b)); });
    if (status != 0)
        return status;
    Output output(options.jsonl);
    for (const auto& [file, plays] : results.recordings())
        output.add(file, plays);
    output.finish();
    return 0;
}

} // namespace

Command makeCompareCommand(App& program) {
    const auto options = std::make_shared<Options>();
    App* app = program.addCommand("compare",
                                  {"velto compare recordings/ --b Pipeline.Algs.HoldTimeoutMilliseconds=400",
                                   "velto compare before.jsonl after.jsonl"},
                                  "Says which touches become something else with other settings: what is\n"
                                  "fixed, what is broken, and why.\n"
                                  "\n"
                                  "In a recording with labels nothing was meant by a touch without one: a tap\n"
                                  "or hold of such a touch that goes is fixed, one that comes is broken.\n"
                                  "\n"
                                  "Without settings, PATHs are two results of velto explain --jsonl, of the\n"
                                  "same recordings.");
    addRecordings(*app, options->paths);
    for (const auto& [name, target] : {std::pair("--a", &options->a), std::pair("--b", &options->b)})
        addSettings(*app, *target, KeyScope::Pipeline,
                    fmt::format("A setting of the {} play; may be given several times (default: as recorded)",
                                target == &options->a ? "first" : "second"),
                    name)
            ->allow_extra_args(false);
    addJobs(*app, options->jobs);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines");
    return {app, [options] { return options->wantsResults() ? compareResults(*options) : compareSettings(*options); }};
}

} // namespace VeltoTouch::Velto
