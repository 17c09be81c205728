#include "Platform/JSON.h"
#include "Plugin/Shared/Keys.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/Replay.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/EventLines.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureTable.h"
#include "Velto/Output/Terminal.h"

#include <memory>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr std::size_t kFlushedFrom = std::size_t{1} << 16U;

struct Options {
    std::vector<std::string> paths;
    std::vector<Setting> settings;
    float speed = Replay::kMaxSpeed;
    bool describe = false;
    bool jsonl = false;
};

// What is played at a pace is shown as it happens; what is not, in large pieces.
class Output {
public:
    explicit Output(bool isLive) : _isLive(isLive) {}

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

void appendFrameLine(std::string& text, std::string_view file, const Algs& algs, const InputReport::Image& image) {
    const std::int16_t* pads = image.padSignal.data();
    text += fmt::format(R"({{"kind":"frame"{},"frame":{},"timeMs":{},"touch":)", file, image.frameNumber,
                        image.timestampMs);
    JSON::appendString(text, algs.touchStateDescription(pads, image.timestampMs));
    text += R"(,"virtual":)";
    JSON::appendString(text, algs.virtualStateDescription(pads, image.timestampMs));
    text += "}\n";
}

// A key of the pipeline's as the pipeline itself knows it.
std::string recordedKey(std::string_view key) { return std::string(*Keys::belowPipeline(key)); }

void appendSummaryLine(std::string& text, std::string_view file, Replay& replay) {
    const auto& counts = replay.counts();
    text += fmt::format(R"({{"kind":"summary"{},"frames":{},"images":{},"invalidReports":{},"events":{},"debugInfo":)",
                        file, counts.frames, counts.images, counts.invalidReports, counts.events);
    JSON::append(text, replay.pipeline().getState(recordedKey(Keys::kDebugInfo)).get());
    text += R"(,"eventStats":)";
    JSON::append(text, replay.pipeline().getState(recordedKey(Keys::kEventStats)).get());
    text += "}\n";
}

std::string summaryText(const Replay& replay, const GestureTable& gestures) {
    const auto& counts = replay.counts();
    return fmt::format("  {} frames, {} images, {} invalid reports, {} events\n", counts.frames, counts.images,
                       counts.invalidReports, counts.events) +
           gestures.summary();
}

void replayAsLines(const Options& options, const std::string& file, Replay& replay, PipelineRecording& recording) {
    Output output(options.speed != Replay::kMaxSpeed);
    const std::string inFile = fileMember(file);
    if (options.describe) {
        replay.frameHandler = [&](const Algs& algs, const InputReport::Image& image) {
            appendFrameLine(output.text, inFile, algs, image);
        };
    }
    replay.eventHandler = [&](const HIDEvent& event, std::uint64_t timeNs) {
        appendEventLine(output.text, inFile, event, timeNs);
    };
    replay.frameDone = [&output] { output.flushWhenDue(); };
    replay.play(recording, options.settings, options.speed, "replaying " + file);
    appendSummaryLine(output.text, inFile, replay);
    output.flush();
}

void replayAsTable(const Options& options, const std::string& file, Replay& replay, PipelineRecording& recording) {
    Output output(options.speed != Replay::kMaxSpeed);
    output.text = printable(file) + "\n" + GestureTable::heading();
    GestureTable gestures([&](const GestureTable::Gesture& gesture) { output.text += GestureTable::row(gesture); });
    if (options.describe) {
        replay.frameHandler = [&](const Algs& algs, const InputReport::Image& image) {
            const std::int16_t* pads = image.padSignal.data();
            output.text += fmt::format("Frame {} @{}ms\n  {}\n  {}\n", image.frameNumber, image.timestampMs,
                                       algs.touchStateDescription(pads, image.timestampMs),
                                       algs.virtualStateDescription(pads, image.timestampMs));
        };
    }
    replay.eventHandler = [&](const HIDEvent& event, std::uint64_t timeNs) {
        gestures.add(gestureEventOf(event), timeNs);
    };
    replay.frameDone = [&output] { output.flushWhenDue(); };
    replay.play(recording, options.settings, options.speed, "replaying " + file);
    gestures.finish(replay.counts().durationNs);
    output.text += summaryText(replay, gestures);
    output.flush();
}

void replayFile(const Options& options, const std::string& file) {
    PipelineRecording recording = loadRecording(file);
    Replay replay;
    if (options.jsonl)
        replayAsLines(options, file, replay, recording);
    else
        replayAsTable(options, file, replay, recording);
    if (replay.counts().settingsLeftOut > 0)
        complain(file, fmt::format("left out {} recorded writes of the keys given with --set",
                                   replay.counts().settingsLeftOut));
}

} // namespace

Command makeReplayCommand(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* app = program.add_subcommand(
        "replay", "Example:\n"
                  "  velto replay gestures.json\n"
                  "  velto replay --jsonl --set Pipeline.Algs.HoldTimeoutMilliseconds=250 recordings/\n\n"
                  "Plays recordings of any version through a fresh recognizer and shows the\n"
                  "gestures that it finds.");
    addRecordings(*app, options->paths);
    addSpeed(*app, options->speed, "Pace: a factor on the recorded one, or max (the default)");
    addSettings(*app, options->settings, KeyScope::Pipeline,
                "Write a setting before the first frame and leave out the recording's own writes of its key; may be "
                "given several times")
        ->allow_extra_args(false);
    app->add_flag("--describe", options->describe, "Show the recognizer's state after every frame");
    app->add_flag("--jsonl", options->jsonl, "JSON Lines: events as they happen, then a summary of each file");
    return {app, [options] {
                warnOfDoubtfulSettings(options->settings);
                return forEachRecording(options->paths, "replaying",
                                        [&](const std::string& file) { replayFile(*options, file); });
            }};
}

} // namespace VeltoTouch::Velto
