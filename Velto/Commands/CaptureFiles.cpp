#include "Velto/Commands/CaptureFiles.h"

#include "Velto/Files/Reading.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <regex>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/file.h>

namespace VeltoTouch::Velto {
namespace {

namespace fs = std::filesystem;

// The limit holds though the file in progress is never deleted.
constexpr std::uint64_t kFilesWithinLimit = 4;

// NAME.json, NAME-2.json, ...
std::string numbered(fs::path path, std::size_t number) {
    if (number > 1)
        path.replace_filename(fmt::format("{}-{}{}", path.stem().string(), number, path.extension().string()));
    return path;
}

// "20261126T034512.123Z"
std::string timeNow() {
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const std::time_t seconds = system_clock::to_time_t(floor<std::chrono::seconds>(now));
    std::tm utc{};
    ::gmtime_r(&seconds, &utc);
    return fmt::format("{:%Y%m%dT%H%M%S}.{:03}Z", utc, (now.time_since_epoch() % 1s).count());
}

struct OwnFile {
    fs::path path;
    std::uint64_t size;

    // In the order in which they were made: those of one recording have the same time and longer and longer names.
    [[nodiscard]] auto order() const {
        const std::string name = path.filename().string();
        return std::tuple(name.substr(0, name.find('Z')), name.size(), name);
    }
};

// Oldest first.
std::vector<OwnFile> ownFiles(const std::string& folder) {
    static const std::regex& kName = *new std::regex(
        fmt::format(R"(velto-\d{{8}}T\d{{6}}\.\d{{3}}Z-({})(-\d+)?\.json)", fmt::join(Bench::kTroubleNames, "|")));
    std::vector<OwnFile> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        std::error_code failure; // of one that somebody else has deleted meanwhile
        const std::uint64_t size = entry.file_size(failure);
        if (!failure && entry.symlink_status(failure).type() == fs::file_type::regular &&
            std::regex_match(entry.path().filename().string(), kName))
            files.push_back({.path = entry.path(), .size = size});
    }
    std::ranges::sort(files, [](const OwnFile& a, const OwnFile& b) { return a.order() < b.order(); });
    return files;
}

} // namespace

RollingRecording::RollingRecording(std::string path, Old old, std::uint64_t largest)
    : _firstPath(std::move(path)), _largest(largest), _path(_firstPath) {
    about(_path, [&] {
        if (old == Old::Keep)
            beginUnused();
        else
            _file = std::make_unique<Files::GrowingRecording>(_path);
    });
}

void RollingRecording::append(const Frame& frame) {
    about(_path, [&] {
        if (_file->size() >= _largest)
            goOn(frame.timestampNs);
        _settings.add(frame);
        _file->append(frame);
    });
}

void RollingRecording::write() {
    about(_path, [this] { _file->write(); });
}

void RollingRecording::sync() {
    about(_path, [this] { _file->sync(); });
}

void RollingRecording::goOn(std::uint64_t timestampNs) {
    _file->write();
    _file->sync();
    const std::uint64_t size = _file->size();
    ++_number;
    beginUnused();
    _sizeBefore += size;
    _settings.writeAt(timestampNs, [this](const Frame& setting) { _file->append(setting); });
}

// Under the first name from the present one on that nothing has. Another capture may take one at the same moment.
void RollingRecording::beginUnused() {
    for (;; ++_number) {
        _path = numbered(_firstPath, _number);
        if (fs::exists(fs::symlink_status(_path)))
            continue;
        try {
            _file = std::make_unique<Files::GrowingRecording>(_path, Old::Keep);
            return;
        } catch (const std::system_error& error) {
            if (error.code() != std::errc::file_exists)
                throw;
        }
    }
}

void WholeCapture::finish() {
    write();
    sync();
}

TroubleCapture::TroubleCapture(const Options& options, const Bench::TroubleWatch& watch)
    : _options(options), _window(watch, options.beforeNs, options.afterNs,
                                 {.begin = [this] { begin(); },
                                  .frame = [this](const Frame& frame) { _recording->append(frame); },
                                  .end = [this] { end(); }}) {
    about(_options.folder, [this] {
        fs::create_directories(_options.folder);
        lockFolder();
    });
    keepLimit();
}

// A limit counts and deletes the recordings of others too: nobody else may write any. A file system without locks is
// taken as it is.
void TroubleCapture::lockFolder() {
    _folder = Files::openToRead(_options.folder);
    if (::flock(_folder.get(), (_options.limit ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw std::runtime_error("another capture keeps recordings here, and --limit is for one alone");
}

void TroubleCapture::mark(Bench::Trouble trouble) {
    _trouble = trouble;
    _window.mark();
}

void TroubleCapture::begin() {
    const fs::path path = fs::path(_options.folder) / fmt::format("velto-{}-{}.json", timeNow(), nameOf(_trouble));
    const std::uint64_t largest = _options.limit.value_or(Files::GrowingRecording::kLargest * kFilesWithinLimit);
    _recording.emplace(path, RollingRecording::Old::Keep,
                       std::min(Files::GrowingRecording::kLargest, largest / kFilesWithinLimit));
    ++_recordings;
}

void TroubleCapture::end() {
    _recording->write();
    _recording->sync();
    _sizeBefore += _recording->size();
    _recording.reset();
    keepLimit();
}

void TroubleCapture::write() {
    if (_recording)
        _recording->write();
}

void TroubleCapture::sync() {
    if (!_recording)
        return;
    _recording->sync();
    keepLimit();
}

void TroubleCapture::finish() { _window.finish(); }

void TroubleCapture::keepLimit() const {
    if (_options.limit)
        about(_options.folder, [this] { deleteBeyond(*_options.limit); });
}

void TroubleCapture::deleteBeyond(std::uint64_t limit) const {
    const std::vector<OwnFile> files = ownFiles(_options.folder);
    std::uint64_t total = 0;
    for (const OwnFile& file : files)
        total += file.size;
    for (const OwnFile& file : files) {
        if (total <= limit)
            return;
        if (_recording && file.path == _recording->path())
            continue;
        fs::remove(file.path);
        total -= file.size;
    }
}

} // namespace VeltoTouch::Velto
