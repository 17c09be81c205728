#include "Velto/Commands/Command.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/SimulatedRecording.h"

#include <memory>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace VeltoTouch::Surface;

constexpr std::uint32_t kMostMadeUp = 5'000; // what a recording at the usual rate has room for

constexpr const char* kDescription = "Example:\n"
                                     "  velto simulate --seed 7 tap:play-pause hold:volume-up -o gestures.json\n"
                                     "  velto simulate --random 100 | velto replay -\n\n"
                                     "Puts simulated fingers on the surface and writes what it reports as a\n"
                                     "recording. The same seed gives the same bytes. What was meant is kept\n"
                                     "beside the reports, as metadata with the key \"Label\".";

constexpr const char* kSteps =
    "Steps:\n"
    "  tap:WHERE[:MS]          a short press (100 ms)\n"
    "  hold:WHERE[:MS]         a long press (900 ms)\n"
    "  slide:WHERE-WHERE[:MS]  a press that rests, rolls over to another place and rests (1200 ms)\n"
    "  palm[:MS]               a palm laid over the middle (1000 ms)\n"
    "  brush:WHERE[:MS]        a contact too weak to be a press (400 ms)\n"
    "  idle[:MS]               nothing (300 ms)\n"
    "  reset                   the controller's firmware restarts\n"
    "WHERE is play-pause, volume-up, volume-down or a pad, A to O; MS is 1 to 3600000.\n";

struct Options {
    Simulation::Options simulation;
    std::vector<std::string> steps;
    std::uint32_t madeUpGestures = 0;
    std::string output; // empty: standard output
};

// Empty for a step that can be read, otherwise what is wrong with it.
std::string faultOf(const std::string& step) {
    try {
        (void)parseStep(step);
        return {};
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

std::vector<Step> scriptFor(const Options& options) {
    std::vector<Step> script;
    for (const std::string& step : options.steps)
        script.push_back(parseStep(step));
    MadeUpUser user(options.simulation.seed);
    for (std::uint32_t gesture = 0; gesture < options.madeUpGestures; ++gesture) {
        script.push_back(user.next()); // a pause
        script.push_back(user.next()); // a gesture
    }
    return script;
}

int simulate(const Options& options) {
    Simulation simulation(options.simulation, scriptOf(scriptFor(options)));
    const Ref<Data> container = recordingOf(simulation).json();
    return forEachFile({options.output}, [&](const std::string& file) { writeFile(file, container->bytes()); });
}

} // namespace

Command makeSimulateCommand(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* app = program.add_subcommand("simulate", kDescription);
    app->footer(kSteps);
    app->add_option("STEP", options->steps, "What the fingers do, one step after the other; see below")
        ->type_name("")
        ->check(faultOf);
    Simulation::Options& simulation = options->simulation;
    addNumber(*app, "--seed", simulation.seed,
              "Where the small differences between fingers and the noise start (default: 1)");
    addNumber(*app, "--rate", simulation.rateHz, "Scans a second (default: 100)", 1U, Simulation::kHighestRateHz)
        ->type_name("HZ");
    addNumber(*app, "--noise", simulation.noise, "Largest noise of a pad, in counts (default: 3)", 0U,
              Simulation::kHighestNoise);
    addNumber(
        *app, "--random", options->madeUpGestures,
        fmt::format("Add this many gestures of a made-up user after the steps, with pauses; at most {}", kMostMadeUp),
        1U, kMostMadeUp);
    app->add_option("-o", options->output, "Where to write (default: standard output)")->type_name("OUT");
    app->callback([options] {
        if (options->steps.empty() && options->madeUpGestures == 0)
            throw CLI::RequiredError("STEP or --random");
    });
    return {app, [options] { return simulate(*options); }};
}

} // namespace VeltoTouch::Velto
