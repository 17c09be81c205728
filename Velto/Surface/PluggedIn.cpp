#include "Velto/Surface/PluggedIn.h"

#include "Platform/Linux/HidrawDevice.h"
#include "Platform/Linux/IIOAccelerometer.h"
#include "Velto/Surface/SurfaceMatch.h"

#include <stdexcept>

namespace VeltoTouch::Surface {

std::vector<HidrawNode> findSurfaces() {
    std::vector<HidrawNode> surfaces = findHidrawNodes(isSurface);
    if (surfaces.empty())
        throw std::runtime_error("no surface is plugged in");
    return surfaces;
}

HidrawMonitor monitorSurfaces() { return HidrawMonitor(isSurface); }

ConnectedDevice connectNode(const std::string& path) {
    return {path, makeRef<HidrawDevice>(path), findAccelerometers()};
}

} // namespace VeltoTouch::Surface
