#include "Plugin/Reports/Regions.h"
#include "Velto/Commands/Command.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/SimulatedRecording.h"

#include <memory>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kSimulateText = "Puts simulated fingers on the surface and writes what it reports as a\n"
                                      "recording. The same seed gives the same bytes. What was meant is kept\n"
                                      "beside the reports, as metadata with the key \"Label\".";

struct SimulateOptions {
    Surface::Simulation::Options simulation;
    std::vector<std::string> steps;
    std::uint32_t madeUpGestures = 0;
    std::string output; // empty: standard output
};

HelpList stepList() {
    HelpList list{.heading = "Steps", .entries = {}, .remarks = {}, .textColumn = 26};
    for (const Surface::StepForm& form : Surface::kStepForms) {
        const bool takesNothing = form.takes == Surface::Takes::Nothing;
        const char* const place = form.takes == Surface::Takes::Place       ? ":WHERE"
                                  : form.takes == Surface::Takes::TwoPlaces ? ":WHERE-WHERE"
                                                                            : "";
        list.entries.push_back({.term = fmt::format("{}{}{}", form.name, place, takesNothing ? "" : "[:MS]"),
                                .text = takesNothing ? std::string(form.meaning)
                                                     : fmt::format("{} ({} ms)", form.meaning, form.defaultMs)});
    }
    list.remarks =
        fmt::format("WHERE is {} or a pad, A to O; MS is 1 to {}.", Surface::regionPlaces(), Surface::kLongestStepMs);
    return list;
}

// The steps in the regions; in a slide from each to each other.
Candidates stepCandidates() {
    Candidates candidates;
    const auto addSlides = [&](std::string_view name, const RegionRow& from) {
        for (const RegionRow& to : kRegionsWithPads) {
            if (to.region != from.region)
                candidates.words.push_back(fmt::format("{}:{}-{}", name, from.place, to.place));
        }
    };
    for (const Surface::StepForm& form : Surface::kStepForms) {
        if (form.takes == Surface::Takes::Nothing || form.takes == Surface::Takes::Duration)
            candidates.words.emplace_back(form.name);
        for (const RegionRow& region : kRegionsWithPads) {
            if (form.takes == Surface::Takes::Place)
                candidates.words.push_back(fmt::format("{}:{}", form.name, region.place));
            else if (form.takes == Surface::Takes::TwoPlaces)
                addSlides(form.name, region);
        }
    }
    return candidates;
}

// Empty for a step that can be read, otherwise what is wrong with it.
std::string faultOf(const std::string& step) {
    try {
        (void)Surface::parseStep(step);
        return {};
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

int simulate(const SimulateOptions& options) {
    std::vector<Surface::Step> script =
        Surface::scriptFor(options.steps, options.simulation.seed, options.madeUpGestures);
    Surface::Simulation simulation(options.simulation, scriptOf(std::move(script)));
    const Ref<Data> container = recordingOf(simulation).json();
    return forEachFile({options.output}, [&](const std::string& file) { writeFile(file, container->bytes()); });
}

} // namespace

Command makeSimulateCommand(App& program) {
    const auto options = std::make_shared<SimulateOptions>();
    App* app = program.addCommand("simulate",
                                  {"velto simulate --seed 7 tap:play-pause hold:volume-up -o gestures.json",
                                   "velto simulate --random 100 | velto replay -"},
                                  kSimulateText);
    app->addList(stepList());
    app->offer(app->add_option("STEP", options->steps, "What the fingers do, one step after the other; see below"),
               stepCandidates())
        ->type_name("")
        ->check(faultOf);
    Surface::Simulation::Options& simulation = options->simulation;
    addNumber(*app, "--seed", simulation.seed,
              "Where the small differences between fingers and the noise start (default: 1)");
    addNumber(*app, "--rate", simulation.rateHz, "Scans a second (default: 100)", 1U,
              Surface::Simulation::kHighestRateHz)
        ->type_name("HZ");
    addNumber(*app, "--noise", simulation.noise, "Largest noise of a pad, in counts (default: 3)", 0U,
              Surface::Simulation::kHighestNoise);
    addNumber(*app, "--random", options->madeUpGestures,
              fmt::format("Add this many gestures of a made-up user after the steps, with pauses; at most {}",
                          Surface::kMostMadeUp),
              1U, Surface::kMostMadeUp);
    addOutput(*app, options->output);
    app->callback([options] {
        if (options->steps.empty() && options->madeUpGestures == 0)
            throw CLI::RequiredError("STEP or --random");
    });
    return {app, [options] { return simulate(*options); }};
}

} // namespace VeltoTouch::Velto
