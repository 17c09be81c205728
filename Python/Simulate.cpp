#include "Python/Simulate.h"

#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/SimulatedRecording.h"

namespace VeltoTouch::Python {

using namespace Surface;

Recording simulate(const std::vector<std::string>& steps, const Simulation::Options& options,
                   std::uint32_t madeUpGestures) {
    Simulation simulation(options, scriptOf(scriptFor(steps, options.seed, madeUpGestures)));
    return {Surface::recordingOf(simulation), ""};
}

} // namespace VeltoTouch::Python
