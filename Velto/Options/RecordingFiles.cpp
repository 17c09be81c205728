#include "Velto/Options/RecordingFiles.h"

#include "Velto/Output/Files.h"
#include "Velto/Output/Progress.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <system_error>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExtension = ".json";

bool isRecording(const fs::directory_entry& entry) {
    std::error_code ignored;
    return entry.path().extension() == kExtension &&
           (entry.is_regular_file(ignored) || !entry.exists(ignored)); // who opens a broken link reports it
}

// A folder below that cannot be read is added itself: who opens it reports why.
void addRecordingsBelow(const fs::path& folder, std::vector<std::string>& files) {
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure); !failure && entry != fs::directory_iterator();
         entry.increment(failure)) {
        std::error_code ignored;
        if (!entry->is_symlink(ignored) && entry->is_directory(ignored))
            addRecordingsBelow(entry->path(), files);
        else if (isRecording(*entry))
            files.push_back(entry->path());
    }
    if (failure)
        files.push_back(folder);
}

std::vector<std::string> recordingsAt(const std::string& path) {
    std::error_code ignored;
    if (path == "-" || !fs::is_directory(path, ignored))
        return {path};
    std::vector<std::string> files;
    addRecordingsBelow(path, files);
    if (files.empty())
        throw std::runtime_error("no recordings (*.json) in this folder");
    std::ranges::sort(files);
    return files;
}

} // namespace

PipelineRecording loadRecording(const std::string& file) {
    PipelineRecording recording(readFile(file).get());
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
