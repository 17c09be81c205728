#include "Python/Score.h"

#include "Velto/Analysis/ScoreLines.h"
#include "Velto/Analysis/TouchObserver.h"

#include <algorithm>
#include <exception>
#include <new>
#include <optional>

namespace VeltoTouch::Python {

using namespace Analysis;

std::string scoreLines(const Recording& recording, const std::vector<Setting>& settings) {
    const Track track(recording.frames());
    RecordingScore score = Analysis::scoreOf(Analysis::labelsOf(recording.frames()), touchesOf(track, settings));
    score.file = recording.name();
    score.durationNs = track.durationNs();
    std::string lines;
    appendScoreLines(lines, score);
    return lines;
}

std::string scoreLines(const Source& source, const std::vector<Setting>& settings) {
    try {
        return scoreLines(source.read(), settings);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        std::string line;
        appendScoreLines(line, {.file = source.name(), .error = error.what()});
        return line;
    }
}

std::string totalLine(std::string_view lines) {
    ScoreReader reader;
    ScoreTotal total;
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        if (const auto recording = reader.read(lines.substr(0, end)))
            total.add(*recording);
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    std::string line;
    appendTotalLine(line, total, std::nullopt);
    return line;
}

} // namespace VeltoTouch::Python
