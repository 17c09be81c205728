#include "Velto/Surface/ConnectedDevice.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Surface {

ConnectedDevice::ConnectedDevice(std::string name, Ref<HIDDeviceBackend> backend, Accelerometers accelerometers)
    : _name(std::move(name)), _backend(std::move(backend)), _accelerometers(std::move(accelerometers)),
      _service(registerDevice(_backend)) {
    std::ranges::for_each(_accelerometers, registerEventService);
}

ConnectedDevice::~ConnectedDevice() {
    std::ranges::for_each(_accelerometers, unregisterEventService);
    unregisterDevice(_service);
}

} // namespace VeltoTouch::Surface
