#include "Velto/Bench/Collector.h"
#include "Velto/Bench/LiveFrames.h"
#include "Velto/Commands/CollectDisplay.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/LabelEdit.h"
#include "Velto/Commands/LiveRun.h"
#include "Velto/Files/GrowingRecording.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/DeviceOptions.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/Blanks.h"
#include "Velto/Surface/Random.h"

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <variant>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Bench::Collector;
using Surface::Step;

constexpr const char* kCollectText =
    "Asks a person for gestures, records them and labels what was done, for velto score.\n"
    "\n"
    "PLAN is GESTURE:REGION xN,...: gestures and places as in velto label --help. A label is as\n"
    "long as the contact, found without the recognizer: from the first report in which a pad's\n"
    "signal exceeds the noise floor to the first in which none does. It goes on when the pads\n"
    "have been quiet for half a second after a contact. A contact that lasts ten seconds longer\n"
    "than --time is given up (a stuck pad).\n"
    "\n"
    "What looks spoiled (no contact, more than one, the wrong region) may be repeated (r), accepted\n"
    "as done (n) or left (x). What is repeated or left is labelled \"spoiled\", from the asking to\n"
    "its end; a score leaves that time out. Of several contacts that are accepted, the one that\n"
    "pressed most in the right region is labelled as the gesture, and each other one as spoiled,\n"
    "like a contact while nothing is asked for. q ends and saves; until then each second is safe,\n"
    "as with velto capture.\n"
    "\n"
    "Without a terminal it writes lines and takes a key of the standard input for each choice.";

constexpr std::uint32_t kMostOfAGesture = 10'000;
constexpr std::chrono::minutes kLongestTime{10};
constexpr std::size_t kMostAsked = 100'000;

struct CollectOptions {
    DeviceChoice device;
    std::vector<Step> asked;
    std::string output;
    std::optional<std::uint64_t> seed; // none: in the order of the plan
    HostTime pause = std::chrono::seconds(2);
    HostTime time = std::chrono::seconds(3);
    float speed = 1;
    Bus::Which bus = Bus::Which::System;
};

// One of a plan's fields: a gesture, and how often.
void addAsked(std::string_view field, std::vector<Step>& asked) {
    const std::string_view text = Surface::trimmed(field);
    const std::size_t blank = text.find_first_of(Surface::kBlanks);
    const Step step = parseGesture(text.substr(0, blank));
    std::uint32_t count = 1;
    if (blank != std::string_view::npos) {
        const std::string_view times = Surface::trimmed(text.substr(blank));
        count = times.front() == 'x' ? numberIn<std::uint32_t>(times.substr(1)).value_or(0) : 0;
        if (count == 0 || count > kMostOfAGesture)
            throw std::invalid_argument(fmt::format("\"{}\": x1 to x{} is wanted", text, kMostOfAGesture));
    }
    if (asked.size() + count > kMostAsked)
        throw std::invalid_argument(fmt::format("more than {} gestures", kMostAsked));
    asked.insert(asked.end(), count, step);
}

std::vector<Step> parsePlan(std::string_view text) {
    std::vector<Step> asked;
    for (;;) {
        const std::size_t comma = text.find(',');
        addAsked(text.substr(0, comma), asked);
        if (comma == std::string_view::npos)
            return asked;
        text.remove_prefix(comma + 1);
    }
}

void shuffle(std::vector<Step>& steps, std::uint64_t seed) {
    Surface::Random random(seed);
    for (std::size_t left = steps.size(); left > 1; --left)
        std::swap(steps[left - 1], steps[random.below(static_cast<std::uint32_t>(left))]);
}

// From the first question to the saved recording.
class Session {
public:
    Session(EventLoop& loop, const CollectOptions& options)
        : _loop(loop), _collector(options.asked, options.pause.count(), options.time.count(),
                                  {.label = [this](const Frame& label) { _recording->append(label); },
                                   .change = [this] { handleChange(); }}),
          _display(makeCollectDisplay(
              loop, _collector, [this](char key) { _collector.press(key); },
              !std::holds_alternative<PipedSurface>(options.device.surface))) {
        loop.addTimer(Files::GrowingRecording::kBetweenSyncs, [this] { _recording->sync(); });
    }

    // Before the loop runs. Throws what a GrowingRecording throws.
    void begin(const std::string& path) { _recording.emplace(path); }

    // Returns the handlers of what comes from the surface, for a session that has begun before the run.
    [[nodiscard]] static Bench::LiveSurface::Handlers handlers(std::unique_ptr<Session>& session) {
        auto handlers = Bench::frameHandlers([&session](const Frame& frame) { session->add(frame); });
        handlers.batchEnd = [&session] { session->_recording->write(); };
        return handlers;
    }

    void finish() {
        _collector.finish();
        _recording->write();
        _recording->sync();
    }
    void closeDisplay() { _display.reset(); }
    [[nodiscard]] const Collector& collector() const noexcept { return _collector; }

private:
    void add(const Frame& frame) {
        _recording->append(frame);
        if (frame.type != Frame::Type::InputReport)
            return;
        if (const auto image = InputReport::Image::parse(frame.report.data(), frame.report.size()))
            _display->imageCame(*image);
        _collector.report(frame);
    }
    void handleChange() {
        if (_display)
            _display->phaseChanged(_collector);
        if (_collector.phase() == Collector::Phase::End)
            _loop.stop();
    }

    EventLoop& _loop;
    std::optional<Files::GrowingRecording> _recording;
    Collector _collector;
    std::unique_ptr<CollectDisplay> _display;
};

int collect(const CollectOptions& options) {
    leaveOutColours(); // those of the screen are others
    requireOtherFile(options.device, options.output);
    LiveRun live(options.device, static_cast<double>(options.speed));
    std::unique_ptr<Session> session;
    live.read(options.bus, {}, Session::handlers(session));
    live.takeSignals(); // before the display takes the terminal
    about(options.output, [&] { session = std::make_unique<Session>(live.loop(), options); });
    about(options.output, [&] { session->begin(options.output); }); // an old one stays if there is no device
    try {
        live.run({}, [&] { session->closeDisplay(); });
    } catch (const ClosedPipe&) { // the last write to the standard output reports it
    } catch (const std::system_error& error) {
        throw std::runtime_error(fmt::format("{}: {}", options.output, error.what()));
    }
    about(options.output, [&] { session->finish(); });
    const Collector& collector = session->collector();
    writeStandardOutput(fmt::format("{}: {} of {} labelled, {} spoiled\n", printable(options.output),
                                    collector.labelled(), collector.asked().size(), collector.spoiled()));
    return live.status();
}

} // namespace

Command makeCollectCommand(App& program) {
    const auto options = std::make_shared<CollectOptions>();
    App* app = program.addCommand(
        "collect", {"velto collect surface \"tap:volume-up x20, hold:play-pause x10\" --seed 1 -o anna.json"},
        kCollectText);
    addDeviceArgument(*app, options->device);
    app->add_option_function<std::string>(
           "PLAN",
           [options](const std::string& text) { options->asked = asUsage("PLAN", [&] { return parsePlan(text); }); },
           "What to ask for, and how often: tap:volume-up x20, hold:play-pause x10")
        ->type_name("")
        ->required();
    addOutputFile(*app, options->output, "The recording");
    app->add_option("--seed", options->seed, "Ask in a random order, the same for the same seed")->type_name("N");
    addSeconds(*app, "--pause", options->pause, "Count down for so many seconds before each gesture (default: 2)");
    addSeconds(*app, "--time", options->time, "Wait for a gesture for so many seconds (default: 3)");
    addSpeed(*app, options->speed, "Pace of a device that is played: a factor on its own, or max (default: 1)");
    addBus(*app, options->bus);
    app->callback([options] {
        if (options->time > kLongestTime)
            throw CLI::ValidationError("--time", "at most ten minutes");
        if (options->seed)
            shuffle(options->asked, *options->seed);
    });
    return {app, [options] { return collect(*options); }};
}

} // namespace VeltoTouch::Velto
