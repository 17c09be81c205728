#include "Benchmarks/SimulatedInput.h"

#include "Surface/Scripts.h"
#include "Surface/Simulation.h"

namespace VeltoTouch::Benchmarks {

PipelineRecording simulatedRecording(std::size_t reports) {
    Surface::MadeUpUser user(1);
    Surface::Simulation simulation({}, [&user] { return std::optional(user.next()); });
    PipelineRecording recording;
    for (std::size_t i = 0; i < reports; ++i) {
        const auto report = simulation.next();
        const auto bytes = report->bytes();
        recording.appendFrame({.type = Frame::Type::InputReport,
                               .timestampNs = report->timestampNs,
                               .key = {},
                               .value = nullptr,
                               .report = {bytes.begin(), bytes.end()}});
    }
    return recording;
}

} // namespace VeltoTouch::Benchmarks
