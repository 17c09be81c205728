#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"
#include "Velto/Analysis/Counted.h"
#include "Velto/Analysis/LineMembers.h"
#include "Velto/Analysis/Tuning.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/PagePlay.h"
#include "Velto/Daemon/ValueText.h"
#include "Velto/Options/Jobs.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/Sweeps.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Page/TuningPage.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

constexpr std::size_t kMostPoints = 100'000;
constexpr std::size_t kMostShown = 20; // of the front, to people

struct TuneOptions {
    std::vector<std::string> paths;
    std::vector<Setting> settings;
    std::vector<Sweep> sweeps;
    std::size_t folds = 0;
    std::size_t jobs = 1;
    bool jsonl = false;
    std::string page; // empty: none
};

// A recording, played at every point.
struct PlayedFile {
    std::vector<Faults> faults;
    std::vector<bool> writes; // by sweep: whether it writes the setting itself
    bool hasLabels;
};

PlayedFile play(const TuneOptions& options, const std::vector<std::vector<Setting>>& points, const std::string& file) {
    const PipelineRecording recording = loadRecording(file);
    const LabelledTrack labelled{.track = Track(recording.frames()), .labels = labelsOf(recording.frames())};
    PlayedFile played{
        .faults = faultsAt(points, options.settings, labelled), .writes = {}, .hasLabels = !labelled.labels.empty()};
    for (const Sweep& sweep : options.sweeps)
        played.writes.push_back(labelled.track.writes(sweep.key));
    return played;
}

// What the present settings have for the swept keys: what --set says, else the default; no value where a recording
// writes its own.
std::vector<Setting> presentOf(const TuneOptions& options, const std::vector<bool>& areWritten) {
    std::vector<Setting> present;
    for (std::size_t i = 0; i < options.sweeps.size(); ++i) {
        const std::string& key = options.sweeps[i].key;
        const auto given = std::ranges::find(options.settings, key, &Setting::key);
        const bool isGiven = given != options.settings.end();
        present.push_back({.key = key,
                           .value = isGiven         ? given->value
                                    : areWritten[i] ? Ref<Value>()
                                                    : defaultOf(*settingUnder(key))});
    }
    return present;
}

std::string settingsObject(const std::vector<Setting>& settings) {
    std::string text;
    for (const Setting& setting : settings)
        text += fmt::format(R"({}"{}":{})", text.empty() ? "" : ",", setting.key,
                            setting.value ? shortText(setting.value.get()) : "null");
    return '{' + text + '}';
}

std::string settingsText(const std::vector<Setting>& settings) {
    std::string text;
    for (const Setting& setting : settings)
        text += fmt::format("{}{}={}", text.empty() ? "" : "  ", setting.key.substr(setting.key.rfind('.') + 1),
                            setting.value ? shortText(setting.value.get()) : "(as recorded)");
    return text;
}

struct Answer {
    std::vector<std::vector<Setting>> points;
    std::vector<Setting> present;
    Tuned tuned;
    bool isOneFold; // folds were asked for, and there is one recording

    [[nodiscard]] const std::vector<Setting>& bestSettings() const {
        return tuned.best ? points[*tuned.best] : present;
    }
    [[nodiscard]] const Faults& bestFaults() const { return tuned.best ? tuned.points[*tuned.best] : tuned.present; }
};

std::string asLines(const Answer& answer) {
    std::string text;
    const Tuned& tuned = answer.tuned;
    for (std::size_t i = 0; i < tuned.points.size(); ++i) {
        const Faults& faults = tuned.points[i];
        fmt::format_to(
            std::back_inserter(text),
            R"({{"kind":"point","settings":{},"missed":{},"wrong":{},"false":{},"stray":{},"cost":{},"onFront":{}}})"
            "\n",
            settingsObject(answer.points[i]), faults.missed, faults.wrong, faults.isFalse, faults.stray, faults.cost(),
            static_cast<bool>(tuned.isOnFront[i]));
    }
    const auto presentHeldOut = tuned.heldOutCost ? std::optional(tuned.present.cost()) : std::nullopt;
    return text + fmt::format(R"({{"kind":"best","settings":{},"cost":{},"heldOutCost":{},"isPresent":{},"present":)"
                              R"({{"settings":{},"cost":{},"heldOutCost":{}}}}})"
                              "\n",
                              settingsObject(answer.bestSettings()), answer.bestFaults().cost(),
                              orNull(tuned.heldOutCost), !tuned.best, settingsObject(answer.present),
                              tuned.present.cost(), orNull(presentHeldOut));
}

std::string row(const Faults& faults, const std::string& settings) {
    return fmt::format("  {:>6} {:>6} {:>6} {:>6} {:>6}  {}\n", faults.missed, faults.wrong, faults.isFalse,
                       faults.stray, faults.cost(), settings);
}

// What was found, a sentence a line.
std::string conclusion(const Answer& answer) {
    const Tuned& tuned = answer.tuned;
    std::string text =
        tuned.best ? coloured(Colour::Green, "best: " + settingsText(answer.bestSettings())) +
                         fmt::format(", cost {} in place of {}\n", answer.bestFaults().cost(), tuned.present.cost())
                   : std::string("the present settings are best: no point costs less\n");
    if (answer.isOneFold)
        text += "one recording has none beside it to choose on: no cost on others\n";
    if (tuned.heldOutCost)
        text += fmt::format("on recordings that were not chosen on: cost {}, with the present settings {}\n",
                            *tuned.heldOutCost, tuned.present.cost());
    return text;
}

std::string asText(const Answer& answer) {
    const Tuned& tuned = answer.tuned;
    std::string text = coloured(Colour::Bold, fmt::format("  {:>6} {:>6} {:>6} {:>6} {:>6}  {}", "missed", "wrong",
                                                          "false", "stray", "cost", "points that no other beats")) +
                       "\n";
    std::size_t onFront = 0;
    for (std::size_t i = 0; i < tuned.points.size(); ++i) {
        if (tuned.isOnFront[i] && ++onFront <= kMostShown)
            text += row(tuned.points[i], settingsText(answer.points[i]));
    }
    if (onFront > kMostShown)
        text +=
            fmt::format("  ... and {} of the front (--jsonl has all)\n", counted(onFront - kMostShown, "more point"));
    text += row(tuned.present, settingsText(answer.present) + "  (present)");
    return text + "\n" + conclusion(answer);
}

// Whether two values of a setting are the same number, however they are written.
bool areEqual(const Ref<Value>& a, const Ref<Value>& b) {
    const auto* const first = as<Number>(a);
    const auto* const second = as<Number>(b);
    return first != nullptr && second != nullptr && first->doubleValue() == second->doubleValue();
}

std::vector<Page::Axis> axesOf(const TuneOptions& options, const Answer& answer) {
    std::vector<Page::Axis> axes;
    for (std::size_t i = 0; i < options.sweeps.size(); ++i) {
        const Ref<Value>& present = answer.present[i].value;
        Page::Axis& axis = axes.emplace_back();
        axis.key = options.sweeps[i].key;
        axis.present = present ? shortText(present.get()) : "as recorded";
        for (const Ref<Value>& value : options.sweeps[i].values) {
            if (present && !axis.presentPlace && areEqual(value, present))
                axis.presentPlace = axis.values.size();
            axis.values.push_back(shortText(value.get()));
        }
    }
    return axes;
}

int tune(const TuneOptions& options) {
    warnOfDoubtfulSettings(options.settings);
    preparePage(options.page);
    const std::vector<std::vector<Setting>> points = gridOf(options.sweeps);
    std::vector<std::vector<Setting>> withPresent = points;
    withPresent.emplace_back();
    std::vector<std::vector<Faults>> recordings;
    std::vector<bool> areWritten(options.sweeps.size());
    bool areLabelled = false;
    const int status = forEachRecordingInOrder(
        options.paths, options.jobs, "tuning on",
        [&](const std::string& file) { return play(options, withPresent, file); },
        [&](const std::string&, PlayedFile played) {
            recordings.push_back(std::move(played.faults));
            for (std::size_t i = 0; i < areWritten.size(); ++i)
                areWritten[i] = areWritten[i] || played.writes[i];
            areLabelled |= played.hasLabels;
        });
    if (recordings.empty())
        return status;
    if (!areLabelled)
        complain("tune", "no recording has labels: nothing was meant, and every gesture counts as a stray");
    const Answer answer{.points = points,
                        .present = presentOf(options, areWritten),
                        .tuned = tuned(recordings, options.folds),
                        .isOneFold = options.folds > 1 && recordings.size() == 1};
    writeStandardOutput(options.jsonl ? asLines(answer) : asText(answer));
    const int written = writePage(
        options.page, [&] { return Page::tuningPage(axesOf(options, answer), answer.tuned, conclusion(answer)); });
    return std::max(status, written);
}

} // namespace

Command makeTuneCommand(App& program) {
    const auto options = std::make_shared<TuneOptions>();
    App* app = program.addCommand(
        "tune", {"velto tune recordings/ --sweep Pipeline.Algs.ActivationThreshold=150:300:10 --folds 5"},
        "Finds the settings of a grid with which labelled recordings go wrong\n"
        "least often. They are played with every point of it.\n"
        "\n"
        "With folds, points are also chosen on some of the recordings and tried on the\n"
        "others: that cost says what to expect of recordings still to come.\n"
        "\n"
        "The present value of a setting is that of --set; without it, what the\n"
        "recording itself writes, or else the default.");
    addRecordings(*app, options->paths);
    addSweeps(*app, options->sweeps);
    addSettings(*app, options->settings, KeyScope::Pipeline,
                "Write a setting before the first frame at every point and leave out the recording's own writes of its "
                "key; may be given several times")
        ->allow_extra_args(false);
    addNumber(*app, "--folds", options->folds,
              "Split the recordings into so many parts, and choose without each in turn", std::size_t{2},
              std::size_t{1000})
        ->type_name("K");
    addJobs(*app, options->jobs);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines: every point, then the best");
    addPage(*app, options->page)->description("Also write a page for a browser, with a map of the costs");
    app->callback([options] {
        std::size_t points = 1;
        for (const Sweep& sweep : options->sweeps)
            points *= std::min(sweep.values.size(), kMostPoints);
        if (points > kMostPoints)
            throw CLI::ValidationError("--sweep", fmt::format("the grid has more than {} points", kMostPoints));
    });
    return {app, [options] { return tune(*options); }};
}

} // namespace VeltoTouch::Velto
