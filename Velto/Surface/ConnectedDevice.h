#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Backend/HIDEventService.h"

#include <string>
#include <vector>

namespace VeltoTouch::Surface {

// Registers a device, and the accelerometers beside it, with the platform for its lifetime.
class ConnectedDevice {
public:
    using Accelerometers = std::vector<Ref<HIDEventService>>;

    ConnectedDevice(std::string name, Ref<HIDDeviceBackend> backend, Accelerometers accelerometers);
    ConnectedDevice(const ConnectedDevice&) = delete;
    ConnectedDevice& operator=(const ConnectedDevice&) = delete;
    ~ConnectedDevice();

    [[nodiscard]] const std::string& name() const noexcept { return _name; }
    [[nodiscard]] HIDDeviceBackend& backend() const noexcept { return *_backend; }
    [[nodiscard]] const Accelerometers& accelerometers() const noexcept { return _accelerometers; }
    [[nodiscard]] io_service_t service() const noexcept { return _service; }

private:
    const std::string _name;
    const Ref<HIDDeviceBackend> _backend;
    const Accelerometers _accelerometers;
    const io_service_t _service;
};

} // namespace VeltoTouch::Surface
