#include "Velto/Analysis/Comparison.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/PagePlay.h"
#include "Velto/Commands/ReportPictures.h"
#include "Velto/Options/Jobs.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Output/ComparisonText.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Output/TouchReader.h"
#include "Velto/Page/Film.h"
#include "Velto/Page/ReportPage.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

struct CompareOptions {
    std::vector<std::string> paths;
    std::vector<Setting> a;
    std::vector<Setting> b;
    std::size_t jobs = 1;
    bool jsonl = false;
    std::string page; // empty: none

    [[nodiscard]] bool wantsResults() const noexcept { return a.empty() && b.empty(); }
};

// What became of one recording in two plays.
struct Plays {
    LabelledTouches a = {};
    LabelledTouches b = {};
    std::shared_ptr<PipelineRecording> recording = {}; // if pictures of it are wanted and it cannot be read again
};

// The lines that show a touch: both plays where one plot can have them, else the second.
std::string commandOf(const CompareOptions& options, const std::string& file, const Page::Range& time) {
    const bool isOnePlot = std::ranges::all_of(options.a, [&options](const Setting& setting) {
        return std::ranges::find(options.b, setting.key, &Setting::key) != options.b.end();
    });
    return isOnePlot ? plotCommand(file, options.a, options.b, time) : plotCommand(file, options.b, {}, time);
}

Plays play(const CompareOptions& options, const std::string& file) {
    PipelineRecording recording = loadRecording(file);
    const Track track(recording.frames());
    const std::vector<Label> labels = labelsOf(recording.frames());
    Plays plays{.a = labelled(labels, touchesOf(track, options.a)), .b = labelled(labels, touchesOf(track, options.b))};
    if (!options.page.empty())
        plays.recording = keptForPictures(file, std::move(recording));
    return plays;
}

// Prints recordings as they come, and the counts at the end.
class ComparisonOutput {
public:
    explicit ComparisonOutput(const CompareOptions& options) : _options(options), _pictures({options.a, options.b}) {}

    void add(const std::string& file, Plays plays) {
        const std::vector<ComparedTouch> touches = compare(plays.a, plays.b);
        for (const ComparedTouch& touch : touches)
            ++_counts[static_cast<std::size_t>(touch.change)];
        std::string text;
        (_options.jsonl ? appendChangeLines : appendChangeText)(text, file, touches);
        writeStandardOutput(text);
        if (!_options.page.empty())
            addCases(file, touches);
        _pictures.keep(file, std::move(plays.recording));
    }

    // Returns the exit status.
    [[nodiscard]] int finish() {
        writeStandardOutput(_options.jsonl ? comparisonLine(_counts) : comparisonText(_counts));
        const int drawn = _pictures.draw(_groups, _options.jobs);
        const int written = writePage(_options.page, [this] {
            return Page::reportPage({.title = "Comparison",
                                     .text = comparisonText(_counts) + std::string(Page::kOrder),
                                     .groups = _groups});
        });
        return std::max(drawn, written);
    }

private:
    void addCases(const std::string& file, const std::vector<ComparedTouch>& touches) {
        std::array<std::vector<Page::Case>, 3> cases; // by group
        for (const ComparedTouch& touch : touches) {
            if (touch.change != Change::Same)
                cases[groupOf(touch.change)].push_back(caseOf(file, touch));
        }
        for (std::size_t i = 0; i < cases.size(); ++i)
            _groups[i].add(std::move(cases[i]));
    }

    static std::size_t groupOf(Change change) { return change == Change::Broken ? 0 : change == Change::Fixed ? 1 : 2; }

    // Results are compared without their recordings: then there is neither picture nor command. Nor has a picture what
    // is neither broken nor fixed.
    [[nodiscard]] Page::Case caseOf(const std::string& file, const ComparedTouch& touch) const {
        const auto& [change, label, a, b] = touch;
        const Page::Range time = Page::timeOf(touch);
        Page::Case made{.kind = std::string(nameOf(change)),
                        .file = file,
                        .texts = {"meant: " + meantText(label, change), touchText(a) + " → " + touchText(b)},
                        .time = time};
        if (_options.wantsResults())
            return made;
        made.command = commandOf(_options, file, time);
        if (change != Change::Other)
            made.touches = {a != nullptr ? a->number : 0, b != nullptr ? b->number : 0};
        return made;
    }

    const CompareOptions& _options;
    ChangeCounts _counts{};
    ReportPictures _pictures;
    std::vector<Page::Group> _groups{Page::Group("Broken"), Page::Group("Fixed"), Page::Group("Otherwise changed")};
};

int compareSettings(const CompareOptions& options) {
    preparePage(options.page);
    ComparisonOutput output(options);
    const int status = forEachRecordingInOrder(
        options.paths, options.jobs, "comparing", [&](const std::string& file) { return play(options, file); },
        [&](const std::string& file, Plays plays) { output.add(file, std::move(plays)); });
    return std::max(status, output.finish());
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

void requireTwo(const std::vector<std::string>& results) {
    if (results.size() != 2)
        throw CLI::ValidationError("--a or --b is wanted, or two results of velto explain --jsonl");
    if (results[0] == "-" && results[1] == "-")
        throw CLI::ValidationError("the standard input can be one of the two results, not both");
}

int compareResults(const CompareOptions& options) {
    preparePage(options.page);
    Results results;
    LabelledTouches Plays::*side = &Plays::a;
    const int status = forEachFile(
        options.paths, [&](const std::string& path) { results.read(path, std::exchange(side, &Plays::b)); });
    if (status != 0)
        return status;
    ComparisonOutput output(options);
    for (const auto& [file, plays] : results.recordings())
        output.add(file, plays);
    return output.finish();
}

} // namespace

Command makeCompareCommand(App& program) {
    const auto options = std::make_shared<CompareOptions>();
    App* app = program.addCommand("compare",
                                  {"velto compare recordings/ --b Pipeline.Algs.HoldTimeoutMilliseconds=400",
                                   "velto compare before.jsonl after.jsonl"},
                                  "Says which touches become something else with other settings: what is\n"
                                  "fixed, what is broken, and why.\n"
                                  "\n"
                                  "In a recording with labels, a touch without a label was not meant as a\n"
                                  "gesture. A tap or hold of such a touch counts as fixed if it disappears and\n"
                                  "as broken if it appears. Labels \"spoiled\" and the touches in their time\n"
                                  "are left out.\n"
                                  "\n"
                                  "Without settings, PATHs are two results of velto explain --jsonl, of the\n"
                                  "same recordings; a page of --html then has no pictures.");
    addRecordings(*app, options->paths);
    for (const auto& [name, target] : {std::pair("--a", &options->a), std::pair("--b", &options->b)})
        addSettings(*app, *target, KeyScope::Pipeline,
                    fmt::format("A setting of the {} play; may be given several times (default: as recorded)",
                                target == &options->a ? "first" : "second"),
                    name)
            ->allow_extra_args(false);
    addJobs(*app, options->jobs);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines");
    addPage(*app, options->page);
    app->callback([options] {
        if (options->wantsResults())
            requireTwo(options->paths);
    });
    return {app, [options] { return options->wantsResults() ? compareResults(*options) : compareSettings(*options); }};
}

} // namespace VeltoTouch::Velto
