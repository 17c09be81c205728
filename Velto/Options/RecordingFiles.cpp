#include "Velto/Options/RecordingFiles.h"

#include "Plugin/Recording/Damage.h"
#include "Velto/Analysis/Recovery.h"
#include "Velto/Files/RecordingPaths.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Progress.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

std::vector<std::string> recordingsAt(const std::string& path) {
    if (path == "-")
        return {path};
    std::vector<std::string> files = Files::recordingsAt(path);
    if (files.empty())
        throw std::runtime_error("no recordings (*.json) in this folder");
    return files;
}

// Whether something of a damaged recording can be saved. Looks at its beginning alone, as far as a moment's work goes.
bool canBeRecovered(std::string_view text) {
    constexpr std::size_t kLookedAt = std::size_t{1} << 16U;
    const auto recovery = Analysis::recoverFrames(*makeRef<Data>(std::string(text.substr(0, kLookedAt))));
    return recovery && !recovery->frames.empty();
}

} // namespace

ContainerContent loadContainer(const std::string& file) {
    const Ref<Data> text = readFile(file);
    try {
        return readContainer(*text);
    } catch (const std::exception& error) {
        if (file == "-" || placeOf(error) == nullptr || !canBeRecovered(text->bytes()))
            throw;
        throw std::runtime_error(fmt::format("{}; velto recover {} saves what is whole", messageOf(error), file));
    }
}

PipelineRecording loadRecording(const std::string& file) {
    PipelineRecording recording(loadContainer(file).frames);
    recording.sortFrames();
    return recording;
}

void addRecordings(App& app, std::vector<std::string>& target) {
    CLI::Option* option = app.add_option(
        "PATH", target, "Recordings, and folders for all *.json files below them; - is the standard input");
    app.offer(option, fileNames())->type_name("")->required();
}

void addRecording(App& app, std::string& target) {
    CLI::Option* option = app.add_option("FILE", target, "Recording of any version; - is the standard input");
    app.offer(option, fileNames())->type_name("")->required();
}

CLI::Option* addOutput(App& app, std::string& target) {
    CLI::Option* option = app.add_option("-o", target, "Where to write (default: standard output)");
    return app.offer(option, fileNames())->type_name("OUT");
}

CLI::Option* addOutputFile(App& app, std::string& target, const std::string& description) {
    CLI::Option* option = app.add_option("-o", target, description);
    return app.offer(option, fileNames())->type_name("OUT")->required()->check([](const std::string& path) {
        return isStandardOutput(path) ? "a file is wanted" : "";
    });
}

int forEachRecording(const std::vector<std::string>& paths, const std::string& work,
                     const std::function<void(const std::string& file)>& handle) {
    std::vector<std::string> files;
    const int status = findRecordings(paths, files);
    return std::max(status, handleRecordings(files, work, handle));
}

int findRecordings(const std::vector<std::string>& paths, std::vector<std::string>& files) {
    return forEachFile(
        paths, [&files](const std::string& path) { std::ranges::move(recordingsAt(path), std::back_inserter(files)); });
}

int handleRecordings(const std::vector<std::string>& files, const std::string& work,
                     const std::function<void(const std::string& file)>& handle) {
    std::optional<Progress> progress;
    if (files.size() > 1 && !standardOutputIsTerminal()) // there the results themselves show how far the work is
        progress.emplace(fmt::format("{} {} recordings", work, files.size()), files.size());
    std::uint64_t done = 0;
    return forEachFile(files, [&](const std::string& file) {
        if (progress)
            progress->step(done++);
        handle(file);
    });
}

} // namespace VeltoTouch::Velto
