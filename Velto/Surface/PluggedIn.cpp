#include "Velto/Surface/PluggedIn.h"

#include "Platform/Linux/HidrawDevice.h"
#include "Platform/Linux/IIOAccelerometer.h"
#include "Velto/Surface/NodeRights.h"
#include "Velto/Surface/SurfaceMatch.h"

#include <stdexcept>
#include <system_error>

namespace VeltoTouch::Surface {

std::vector<HidrawNode> findSurfaces() {
    std::vector<HidrawNode> surfaces = findHidrawNodes(isSurface);
    if (surfaces.empty())
        throw std::runtime_error("no surface is plugged in");
    return surfaces;
}

HidrawMonitor monitorSurfaces() { return HidrawMonitor(isSurface); }

ConnectedDevice connectNode(const std::string& path) {
    try {
        return {path, makeRef<HidrawDevice>(path), findAccelerometers()};
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::permission_denied || error.code() == std::errc::operation_not_permitted)
            throwMissingRight(path);
        throw;
    }
}

} // namespace VeltoTouch::Surface
