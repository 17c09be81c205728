#pragma once

#include "Plugin/Recording/PipelineRecording.h"

#include <cstdint>
#include <list>
#include <string>

#include <pybind11/pybind11.h>

namespace VeltoTouch::Python {

// As the program calls what has no path.
[[nodiscard]] inline std::string shownName(const std::string& file) { return file.empty() ? "-" : file; }

// A recording that does not change any more, its frames sorted by time. Any number of threads may read one.
class Recording {
public:
    // `file` is the path as it was given; empty if there is none.
    Recording(PipelineRecording recording, std::string file);

    [[nodiscard]] const std::list<Frame>& frames() const noexcept { return _recording.frames(); }
    [[nodiscard]] const std::string& file() const noexcept { return _file; }
    [[nodiscard]] std::string name() const { return shownName(_file); }

    // Nanoseconds from the first frame to one of these, and to the last.
    [[nodiscard]] std::uint64_t nsOf(const Frame& frame) const noexcept {
        return frame.timestampNs - frames().front().timestampNs;
    }
    [[nodiscard]] std::uint64_t durationNs() const noexcept { return frames().empty() ? 0 : nsOf(frames().back()); }

private:
    PipelineRecording _recording;
    std::string _file;
};

// Adds the class to the module.
void bindRecording(pybind11::module_& module);

} // namespace VeltoTouch::Python
