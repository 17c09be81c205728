#include "Plugin/Recording/RecordingCopy.h"

#include "Plugin/Reports/InputReport.h"

#include <iterator>
#include <limits>

namespace VeltoTouch {

RecordingCopy::RecordingCopy(std::size_t expectedReports) {
    _copy._frames.reserve(expectedReports, InputReport::kImageReportLength);
}

void RecordingCopy::begin(const FrameList& source) {
    _copy._frames.recycle();
    _generation = source.generation();
    ++_beginnings;
}

bool RecordingCopy::copySome(const PipelineRecording& recording, std::size_t count) {
    const FrameList& source = recording._frames;
    FrameList& copied = _copy._frames;
    if (_generation != source.generation())
        begin(source);
    if (_beginnings == kMostBeginnings)
        count = std::numeric_limits<std::size_t>::max();
    const auto end = source.frames().end();
    auto frame = copied.frames().empty() ? source.frames().begin() : std::next(_lastCopied);
    for (; frame != end && count != 0; ++frame, --count) {
        copied.appendCopy(*frame);
        _lastCopied = frame;
    }
    if (frame != end)
        return false;
    copied.setBound(source.bound());
    copied.releaseSpareMemory();
    _copy.pipeline = recording.pipeline;
    return true;
}

} // namespace VeltoTouch
