#include "Plugin/Recording/RecordingCopy.h"

#include "Plugin/Reports/InputReport.h"

#include <iterator>
#include <limits>

namespace VeltoTouch {

RecordingCopy::RecordingCopy(std::size_t expectedReports) {
    for (std::size_t i = 0; i < expectedReports; ++i)
        _copy._spareFrames.emplace_back().report.reserve(InputReport::kImageReportLength);
}

void RecordingCopy::begin(const PipelineRecording& source) {
    _copy._spareFrames.splice(_copy._spareFrames.end(), _copy._frames);
    _generation = source._generation;
    ++_beginnings;
}

bool RecordingCopy::copySome(const PipelineRecording& source, std::size_t count) {
    if (_generation != source._generation)
        begin(source);
    if (_beginnings == kMostBeginnings)
        count = std::numeric_limits<std::size_t>::max();
    auto frame = _copy._frames.empty() ? source._frames.begin() : std::next(_lastCopied);
    for (; frame != source._frames.end() && count != 0; ++frame, --count) {
        std::list<Frame> node = _copy.takeNode();
        node.front() = *frame;
        _copy._frames.splice(_copy._frames.end(), node);
        _lastCopied = frame;
    }
    if (frame != source._frames.end())
        return false;
    _copy.pipeline = source.pipeline;
    _copy._maxFrameCount = source._maxFrameCount;
    _copy._spareFrames.clear();
    return true;
}

} // namespace VeltoTouch
