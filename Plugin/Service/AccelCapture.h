#pragma once

#include "Plugin/Pipeline/PipelineInterfaces.h"

#include <cstdint>
#include <deque>

namespace VeltoTouch {

// One sample of the accelerometer, in units of the standard gravity.
struct AccelSample {
    std::uint64_t timestamp; // host ticks at its arrival
    float x;
    float y;
    float z;
};

// The accelerometer's history around digitizer events: of the samples the newest 100 wait; after a digitizer event they
// are recorded, and so are the next 100. No lock: the service's guards it.
class AccelCapture {
public:
    // A digitizer event was dispatched.
    void captureAround() noexcept;
    // Takes in a sample: it waits, or it is recorded after all that wait, as metadata "Accel": {"X", "Y", "Z"}.
    void add(const AccelSample& sample, PipelineInput& recording);

private:
    std::uint64_t _samplesNeededCount = 0; // samples still to be recorded
    std::deque<AccelSample> _samples;      // not recorded yet, oldest first
};

} // namespace VeltoTouch
