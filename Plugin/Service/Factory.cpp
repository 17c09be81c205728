#include "Plugin/Service/Factory.h"

#include "Plugin/Service/VeltoIUnknown.h"
#include "Plugin/Service/VeltoTouchHIDService.h"

extern "C" __attribute__((visibility("default"))) void*
VeltoTouchHIDServiceFactory(VeltoTouch::CFTypeRef /*allocator*/, VeltoTouch::CFUUIDRef type) noexcept {
    using namespace VeltoTouch;
    if (!CFEqual(type, kIOHIDServicePlugInTypeID))
        return nullptr;
    const auto service = makeRef<VeltoTouchHIDService>();
    CFRetain(service.get()); // the host's
    return VeltoIUnknown::handleOf(service->getPluginInterface());
}
