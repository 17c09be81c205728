#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"
#include "Velto/Analysis/Counted.h"
#include "Velto/Analysis/Replay.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/Disturbances.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Options/Settings.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureTable.h"
#include "Velto/Output/Progress.h"
#include "Velto/Output/Terminal.h"

#include <array>
#include <memory>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Analysis::Replay;

struct InfoOptions {
    std::vector<std::string> paths;
    bool json = false;
};

struct Info {
    std::uint64_t version = 0;
    std::array<std::uint64_t, 3> framesByType{}; // in the order of Frame::Type
    Replay::Counts counts;
    std::uint64_t gaps = 0;
    std::uint64_t resets = 0;
    Disturbances disturbances;
    std::vector<Setting> settings; // in force at the end
    std::map<std::string, std::map<std::string, std::uint64_t>> gestures;
};

// A key that acts without a value is no setting. `recording` holds the newest write of each key alone.
std::vector<Setting> settingsInForce(const PipelineRecording& recording) {
    std::vector<Setting> settings;
    for (const Frame& frame : recording.frames()) {
        std::string key = Keys::pipelineKey(frame.key);
        const auto setting = settingUnder(key);
        if (!setting || !setting->row.is<SettingRow::Action>())
            settings.push_back({.key = std::move(key), .value = frame.value});
    }
    return settings;
}

Info inspect(const std::string& file) {
    Info info;
    auto [version, frames] = loadContainer(file);
    PipelineRecording recording(std::move(frames));
    recording.sortFrames();
    info.version = version;
    for (const Frame& frame : recording.frames())
        ++info.framesByType[static_cast<std::size_t>(frame.type)];

    Replay replay;
    GestureTable gestures;
    replay.gestureHandler = [&](const Gesture& gesture) { gestures.add(gesture); };
    replay.disturbanceHandler = [&info](const Disturbance& disturbance) { info.disturbances.add(disturbance); };
    Progress progress("replaying " + file, recording.frames().size());
    replay.frameDone = [&progress, played = std::uint64_t{0}]() mutable { progress.update(++played); };
    replay.play(recording, {}, Replay::kMaxSpeed);
    info.counts = replay.counts();
    gestures.finish(info.counts.duration);
    info.gaps = replay.pipeline().disjointImageCount;
    info.resets = replay.pipeline().resetCount;
    info.gestures = gestures.counts();
    recording.trimFrames(0);
    info.settings = settingsInForce(recording);
    return info;
}

// Text of a recording for one line; of a long one the beginning and how long it is.
std::string shortened(std::string_view text) {
    constexpr std::size_t kMostShown = 200;
    if (text.size() <= kMostShown)
        return printable(text);
    std::size_t end = kMostShown;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) // within a character
        --end;
    return fmt::format("{}... ({} bytes)", printable(text.substr(0, end)), text.size());
}

std::string asText(const std::string& file, const Info& info) {
    std::string text = coloured(Colour::Bold, printable(file)) + "\n";
    const auto line = [&text](std::string_view name, const std::string& value) {
        text += fmt::format("  {:<18} {}\n", name, value);
    };
    const auto disturbances = [&](std::string_view name, std::uint64_t count, Disturbance::Kind kind) {
        line(name, fmt::format("{}", count));
        for (const std::string& disturbance : info.disturbances.lines(kind))
            line("", disturbance);
    };
    line("version", fmt::format("{}", info.version));
    line("frames",
         fmt::format("{} ({}, {}, {} metadata)", info.counts.frames, Analysis::counted(info.framesByType[0], "setting"),
                     Analysis::counted(info.framesByType[1], "input report"), info.framesByType[2]));
    line("duration", fmt::format("{:.3f} s", Seconds(info.counts.duration).count()));
    line("images", fmt::format("{}", info.counts.images));
    using enum Disturbance::Kind;
    disturbances("invalid reports", info.counts.invalidReports, InvalidReport);
    disturbances("gaps", info.gaps, Gap);
    disturbances("firmware resets", info.resets, Reset);
    for (const Setting& setting : info.settings)
        line("setting", fmt::format("{} = {}", shortened(setting.key),
                                    setting.value ? shortened(JSON::text(setting.value.get())) : "(none)"));
    for (const auto& [name, regions] : info.gestures) {
        for (const auto& [region, count] : regions)
            line(name, fmt::format("{} x {}", count, region.empty() ? "-" : region));
    }
    return text;
}

Dictionary::Entry number(std::string name, std::uint64_t count) {
    return {.key = std::move(name), .value = Number::withUnsignedLong(count)};
}

Ref<Value> dictionary(std::vector<Dictionary::Entry> entries) { return makeRef<Dictionary>(std::move(entries)); }

std::string asJSON(const std::string& file, const Info& info) {
    std::vector<Dictionary::Entry> settings;
    for (const Setting& setting : info.settings)
        settings.push_back({.key = setting.key, .value = setting.value ? setting.value : makeRef<Null>()});
    std::vector<Dictionary::Entry> gestures;
    for (const auto& [name, regions] : info.gestures) {
        std::vector<Dictionary::Entry> counts;
        for (const auto& [region, count] : regions)
            counts.push_back(number(region, count));
        gestures.push_back({.key = name, .value = dictionary(std::move(counts))});
    }
    const auto frames = dictionary({number("State", info.framesByType[0]), number("InputReport", info.framesByType[1]),
                                    number("Metadata", info.framesByType[2])});
    const auto all = dictionary({{.key = "file", .value = makeRef<String>(file)},
                                 number("version", info.version),
                                 {.key = "frames", .value = frames},
                                 number("durationNs", info.counts.duration.count()),
                                 number("images", info.counts.images),
                                 number("invalidReports", info.counts.invalidReports),
                                 number("gaps", info.gaps),
                                 number("resets", info.resets),
                                 {.key = "settings", .value = dictionary(std::move(settings))},
                                 {.key = "gestures", .value = dictionary(std::move(gestures))}});
    return JSON::text(all.get()) + "\n";
}

} // namespace

Command makeInfoCommand(App& program) {
    const auto options = std::make_shared<InfoOptions>();
    App* app = program.addCommand("info", {"velto info gestures.json"},
                                  "Shows what recordings hold: frames, duration, gaps, settings in force,\n"
                                  "gestures found.\n"
                                  "\n"
                                  "velto stats shows how steadily reports came, velto explain why each touch\n"
                                  "was decided as it was.");
    addRecordings(*app, options->paths);
    app->add_flag("--json", options->json, "One JSON object a file");
    return {app, [options] {
                return forEachRecording(options->paths, "replaying", [&](const std::string& file) {
                    const Info info = inspect(file);
                    writeStandardOutput(options->json ? asJSON(file, info) : asText(file, info));
                });
            }};
}

} // namespace VeltoTouch::Velto
