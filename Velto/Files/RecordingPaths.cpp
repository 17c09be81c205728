#include "Velto/Files/RecordingPaths.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace VeltoTouch::Files {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExtension = ".json";

bool isRecording(const fs::directory_entry& entry) {
    std::error_code ignored;
    return entry.path().extension() == kExtension && (entry.is_regular_file(ignored) || !entry.exists(ignored));
}

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

} // namespace

std::vector<std::string> recordingsAt(const std::string& path) {
    std::error_code ignored;
    if (!fs::is_directory(path, ignored))
        return {path};
    std::vector<std::string> files;
    addRecordingsBelow(path, files);
    std::ranges::sort(files);
    return files;
}

} // namespace VeltoTouch::Files
