#pragma once

#include "Plugin/Recording/PipelineRecording.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>

namespace VeltoTouch {

// Copies a recording in pieces, for readers that must not hold its lock as long as a whole copy takes. Between two
// pieces the recording may go on; the copy is what the recording was at the last piece. No lock: one thread.
class RecordingCopy {
public:
    // Takes the memory of so many reports beforehand, so that a piece only copies bytes. Throws std::bad_alloc.
    explicit RecordingCopy(std::size_t expectedReports);
    RecordingCopy(const RecordingCopy&) = delete;
    RecordingCopy& operator=(const RecordingCopy&) = delete;

    // Copies up to `count` frames more of the same recording, whose lock the caller holds. Returns true when the copy
    // is complete. Begins again if frames have been taken out of the recording meanwhile; the third time it copies all
    // at once, so that it comes to an end.
    [[nodiscard]] bool copySome(const PipelineRecording& recording, std::size_t count);

    // The copy; when it is complete, with the target and bound that the recording had at the last piece, and no
    // playback.
    [[nodiscard]] PipelineRecording& recording() noexcept { return _copy; }

private:
    static constexpr int kMostBeginnings = 3;

    void begin(const FrameList& source);

    PipelineRecording _copy;
    std::optional<std::uint64_t> _generation;     // of the list that is copied, when the copy was begun
    std::list<Frame>::const_iterator _lastCopied; // in the source; valid once something is copied
    int _beginnings = 0;
};

} // namespace VeltoTouch
