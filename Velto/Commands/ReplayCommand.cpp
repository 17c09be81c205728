#include "Platform/JSON.h"
#include "Plugin/Shared/Keys.h"
#include "Velto/Analysis/Counted.h"
#include "Velto/Analysis/Replay.h"
#include "Velto/Commands/Command.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureText.h"
#include "Velto/Output/Progress.h"
#include "Velto/Output/Terminal.h"

#include <memory>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Analysis::counted;
using Analysis::Replay;

struct ReplayOptions {
    std::vector<std::string> paths;
    std::vector<Setting> settings;
    float speed = Replay::kMaxSpeed;
    bool describe = false;
    bool jsonl = false;
};

// What is played at a pace is shown as it happens; what is not, in large pieces.
class ReplayOutput {
public:
    explicit ReplayOutput(bool isLive) : _isLive(isLive) {}

    // The text that waits to be written.
    std::string text;

    void flush() {
        writeStandardOutput(text);
        text.clear();
    }
    void flushWhenDue() {
        if ((_isLive && !text.empty()) || text.size() >= kFlushedFrom)
            flush();
    }

private:
    bool _isLive;
};

using ShowFrame = std::function<void(std::string& text, const Algs& algs, const InputReport::Image& image)>;

ShowFrame frameLines(const std::string& inFile) {
    return [inFile](std::string& text, const Algs& algs, const InputReport::Image& image) {
        const std::int16_t* pads = image.padSignal.data();
        text += fmt::format(R"({{"kind":"frame"{},"frame":{},"timeMs":{},"touch":)", inFile, image.frameNumber,
                            image.timestampMs);
        JSON::appendString(text, algs.touchStateDescription(pads, image.timestampMs));
        text += R"(,"virtual":)";
        JSON::appendString(text, algs.virtualStateDescription(pads, image.timestampMs));
        text += "}\n";
    };
}

void showFrame(std::string& text, const Algs& algs, const InputReport::Image& image) {
    const std::int16_t* pads = image.padSignal.data();
    text += fmt::format("Frame {} @{}ms\n  {}\n  {}\n", image.frameNumber, image.timestampMs,
                        algs.touchStateDescription(pads, image.timestampMs),
                        algs.virtualStateDescription(pads, image.timestampMs));
}

// A key of the pipeline's as the pipeline itself knows it.
std::string recordedKey(std::string_view key) { return std::string(*Keys::belowPipeline(key)); }

std::string summaryLine(const std::string& inFile, Replay& replay) {
    const auto& counts = replay.counts();
    return fmt::format(
        R"({{"kind":"summary"{},"frames":{},"images":{},"invalidReports":{},"events":{},"debugInfo":{},"eventStats":{}}})"
        "\n",
        inFile, counts.frames, counts.images, counts.invalidReports, counts.events,
        JSON::text(replay.pipeline().getState(recordedKey(Keys::kDebugInfo)).get()),
        JSON::text(replay.pipeline().getState(recordedKey(Keys::kEventStats)).get()));
}

std::string summaryText(const Replay& replay, const GestureText& gestures) {
    const auto& counts = replay.counts();
    return fmt::format("  {}, {}, {}, {}\n", counted(counts.frames, "frame"), counted(counts.images, "image"),
                       counted(counts.invalidReports, "invalid report"), counted(counts.events, "event")) +
           gestures.summary();
}

void replayFile(const ReplayOptions& options, const std::string& file) {
    PipelineRecording recording = loadRecording(file);
    Replay replay;
    ReplayOutput output(options.speed != Replay::kMaxSpeed);
    const std::string inFile = fileMember(file);
    const auto gestures = options.jsonl ? GestureText::eventLines(file) : GestureText::table(file, false);
    output.text = gestures->heading();
    if (options.describe)
        replay.frameHandler = [&output, show = options.jsonl ? frameLines(inFile) : showFrame](
                                  const Algs& algs, const InputReport::Image& image) {
            show(output.text, algs, image);
        };
    replay.gestureHandler = [&](const Gesture& gesture) { gestures->add(output.text, gesture); };
    Progress progress("replaying " + file, recording.frames().size());
    replay.frameDone = [&, played = std::uint64_t{0}]() mutable {
        output.flushWhenDue();
        progress.update(++played);
    };
    replay.play(recording, options.settings, options.speed);
    gestures->finish(output.text, replay.counts().duration);
    output.text += options.jsonl ? summaryLine(inFile, replay) : summaryText(replay, *gestures);
    output.flush();
    if (replay.counts().settingsLeftOut > 0)
        complain(file, fmt::format("left out {} recorded writes of the keys given with --set",
                                   replay.counts().settingsLeftOut));
}

} // namespace

Command makeReplayCommand(App& program) {
    const auto options = std::make_shared<ReplayOptions>();
    App* app = program.addCommand("replay",
                                  {"velto replay gestures.json",
                                   "velto replay --jsonl --set Pipeline.Algs.HoldTimeoutMilliseconds=250 recordings/"},
                                  "Plays recordings of any version and shows the gestures that a fresh\n"
                                  "recognizer finds.\n"
                                  "\n"
                                  "For why a touch became none see velto explain, against labels velto score.");
    addRecordings(*app, options->paths);
    addSpeed(*app, options->speed, "Pace: a factor on the recorded one, or max (the default)");
    addPlayedSettings(*app, options->settings);
    app->add_flag("--describe", options->describe, "Show the recognizer's state after every frame");
    app->add_flag("--jsonl", options->jsonl, "JSON Lines: events as they happen, then a summary of each file");
    return {app, [options] {
                warnOfDoubtfulSettings(options->settings);
                return forEachRecording(options->paths, "replaying",
                                        [&](const std::string& file) { replayFile(*options, file); });
            }};
}

} // namespace VeltoTouch::Velto
