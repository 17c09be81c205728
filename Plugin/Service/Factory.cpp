#include "Plugin/Service/VeltoIUnknown.h"
#include "Plugin/Service/VeltoTouchHIDService.h"

// The one symbol that the module exports. Gives the plug-in interface handle of a new service, which the host holds by
// the object's only reference; null for a type that is no HID service.
extern "C" __attribute__((visibility("default"))) void*
VeltoTouchHIDServiceFactory(VeltoTouch::CFTypeRef /*allocator*/, VeltoTouch::CFUUIDRef type) noexcept {
    using namespace VeltoTouch;
    if (!CFEqual(type, kIOHIDServicePlugInTypeID))
        return nullptr;
    const auto service = makeRef<VeltoTouchHIDService>();
    CFRetain(service.get()); // the host's
    return VeltoIUnknown::handleOf(service->getPluginInterface());
}
