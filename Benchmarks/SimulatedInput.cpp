#include "Benchmarks/SimulatedInput.h"

#include "Plugin/Shared/ClockConversion.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/Simulation.h"

namespace VeltoTouch::Benchmarks {

PipelineRecording simulatedRecording(std::size_t reports) {
    Surface::MadeUpUser user(1);
    Surface::Simulation simulation({}, [&user] { return std::optional(user.next()); });
    PipelineRecording recording;
    for (std::size_t i = 0; i < reports; ++i) {
        const auto report = simulation.next();
        recording.handleInputReport(Util::machTimeFromNanoseconds(report->timestampNs), report->content.data(),
                                    report->length);
    }
    return recording;
}

} // namespace VeltoTouch::Benchmarks
