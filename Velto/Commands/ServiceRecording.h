#pragma once

#include "Platform/Value.h"
#include "Velto/Host/HostTime.h"

#include <cstdint>
#include <string>

// The recording that a service keeps, as `velto run` and `velto record` save it. It is bounded to the newest
// kMaxRecordedFrames reports and metadata frames; a command that saves it reports what is missing.

namespace VeltoTouch::Velto {

// The contents of a recording. Times are of the host's clock.
struct RecordedExtent {
    std::uint64_t reports = 0;
    std::uint64_t metadata = 0;
    HostTime firstReport{};
    HostTime lastReport{};

    [[nodiscard]] bool isFull() const noexcept;
    [[nodiscard]] double seconds() const noexcept; // from the first report to the last
};

// Writes the value of the service's property "Recording" to a file, as `writeFile` does, and returns what is in it.
// Throws std::runtime_error if there is no recording, and what `writeFile` throws.
RecordedExtent saveRecording(const Ref<Value>& recording, const std::string& file);

} // namespace VeltoTouch::Velto
