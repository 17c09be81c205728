#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/TouchLines.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Analysis/WeakContacts.h"
#include "Velto/Analysis/WouldBe.h"
#include "Velto/Commands/Command.h"
#include "Velto/Options/Jobs.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Output/TouchText.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

struct ExplainOptions {
    std::vector<std::string> paths;
    std::vector<Setting> settings;
    std::size_t touch = 0; // 0: not chosen so
    std::optional<HostTime> at;
    std::size_t jobs = 1;
    bool rejected = false;
    bool weak = false;
    bool wouldBe = false;
    bool jsonl = false;

    [[nodiscard]] bool wantsOne() const noexcept { return touch > 0 || at; }
};

// A recording's answer. Touches that are not shown still count for what is typical.
struct Explanation {
    std::string file;
    std::vector<Touch> touches = {};
    std::vector<bool> isShown = {}; // by touch
    std::vector<Label> labels = {};
    std::vector<WeakContact> weak = {};
};

std::uint64_t distance(const Touch& touch, std::uint64_t ns) noexcept {
    if (ns < touch.startNs)
        return touch.startNs - ns;
    return ns > touch.endNs ? ns - touch.endNs : 0;
}

// Throws std::runtime_error with what there is instead.
Touch& touchNumbered(std::vector<Touch>& touches, std::size_t number) {
    if (number > touches.size())
        throw std::runtime_error(fmt::format("no touch {}: there are {}", number, touches.size()));
    return touches[number - 1];
}
Touch& touchAt(std::vector<Touch>& touches, HostTime time) {
    const std::uint64_t ns = time.count();
    const auto nearest =
        std::ranges::min_element(touches, {}, [ns](const Touch& touch) { return distance(touch, ns); });
    if (nearest == touches.end())
        throw std::runtime_error("there is no touch");
    if (distance(*nearest, ns) > 0)
        throw std::runtime_error(fmt::format(
            "no touch at {} s: the nearest is touch {}, {:.3f} to {:.3f} s", Seconds(time).count(), nearest->number,
            static_cast<double>(nearest->startNs) / 1e9, static_cast<double>(nearest->endNs) / 1e9));
    return *nearest;
}

std::vector<Touch*> wantedOf(const ExplainOptions& options, std::vector<Touch>& touches) {
    if (options.touch > 0)
        return {&touchNumbered(touches, options.touch)};
    if (options.at)
        return {&touchAt(touches, *options.at)};
    std::vector<Touch*> wanted;
    for (Touch& touch : touches) {
        if (!options.rejected || touch.outcome == Outcome::Cancel)
            wanted.push_back(&touch);
    }
    return wanted;
}

Explanation explain(const ExplainOptions& options, const std::string& file) {
    const PipelineRecording recording = loadRecording(file);
    const Track track(recording.frames());
    Explanation explanation{.file = file, .labels = labelsOf(recording.frames())};
    explanation.touches = touchesOf(track, options.settings, TouchObserver::Contributions::Follow);
    const std::vector<Touch*> wanted = wantedOf(options, explanation.touches);
    if (options.wouldBe || options.wantsOne())
        findAlternatives(track, options.settings, wanted);
    explanation.isShown.resize(explanation.touches.size());
    for (const Touch* touch : wanted)
        explanation.isShown[touch->number - 1] = true;
    if (options.weak)
        explanation.weak = weakContactsOf(track, options.settings);
    return explanation;
}

// Calls `show` with each touch that is shown and its label, null if it has none.
template <class Show>
void forEachShown(const Explanation& explanation, const Show& show) {
    const std::vector<const Label*> labels = labelsByTouch(explanation.labels, explanation.touches);
    for (std::size_t i = 0; i < explanation.touches.size(); ++i) {
        if (explanation.isShown[i])
            show(explanation.touches[i], labels[i]);
    }
}

std::string asLines(const Explanation& explanation, const Typicals& typicals) {
    std::string text;
    forEachShown(explanation, [&](const Touch& touch, const Label* label) {
        appendTouchLine(text, explanation.file, touch, label, typicals);
    });
    for (const WeakContact& contact : explanation.weak)
        appendWeakLine(text, explanation.file, contact);
    return text;
}

// What became a gesture has one line, unless it is the one that was asked for.
std::string asText(const Explanation& explanation, const Typicals& typicals, bool showsAll) {
    std::string text = coloured(Colour::Bold, printable(explanation.file)) + "\n";
    forEachShown(explanation, [&](const Touch& touch, const Label* label) {
        text += touchHeading(touch, label);
        if (showsAll || touch.outcome == Outcome::Cancel)
            text += touchDetails(touch, typicals);
    });
    for (const WeakContact& contact : explanation.weak)
        text += weakText(contact);
    return text;
}

int explainAll(const ExplainOptions& options) {
    warnOfDoubtfulSettings(options.settings);
    std::vector<Explanation> explanations;
    Typicals typicals;
    const int status = forEachRecordingInOrder(
        options.paths, options.jobs, "explaining", [&](const std::string& file) { return explain(options, file); },
        [&](const std::string&, Explanation explanation) {
            for (const Touch& touch : explanation.touches)
                typicals.add(touch);
            explanations.push_back(std::move(explanation));
        });
    for (const Explanation& explanation : explanations)
        writeStandardOutput(options.jsonl ? asLines(explanation, typicals)
                                          : asText(explanation, typicals, options.wantsOne() || options.wouldBe));
    return status;
}

} // namespace

Command makeExplainCommand(App& program) {
    const auto options = std::make_shared<ExplainOptions>();
    App* app = program.addCommand("explain",
                                  {"velto explain gestures.json --rejected", "velto explain gestures.json --at 6.85"},
                                  "Says of every touch why it became what it became: each check with its\n"
                                  "value and bound, which one failed and by how much.\n"
                                  "\n"
                                  "A single touch is played again with other settings too, to find those\n"
                                  "that would have made it something else.");
    addRecordings(*app, options->paths);
    CLI::Option* touch = addNumber(*app, "--touch", options->touch, "Only this touch, counted from 1", std::size_t{1});
    CLI::Option* at = addSeconds(*app, "--at", options->at, "Only the touch at this time of the recording");
    at->excludes(touch);
    app->add_flag("--rejected", options->rejected, "Only touches that became no gesture")
        ->excludes(touch)
        ->excludes(at);
    app->add_flag("--weak", options->weak, "Contacts too weak to be touches, too");
    app->add_flag("--would-be", options->wouldBe, "Find for every touch shown the settings that would change it");
    addPlayedSettings(*app, options->settings);
    addJobs(*app, options->jobs);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines");
    return {app, [options] { return explainAll(*options); }};
}

} // namespace VeltoTouch::Velto
