#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Backend/HIDEventService.h"
#include "Platform/Linux/HidrawNodes.h"
#include "Velto/Surface/Step.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The DEVICE of the command line.

namespace VeltoTouch::Velto {

struct DeviceChoice {
    enum class Kind { Simulated, Recorded, FirstSurface, HidRaw };

    Kind kind = Kind::Simulated;
    std::string name = "sim";                        // as given
    std::optional<std::vector<Surface::Step>> steps; // of a simulated one; without them its user never ends
    std::string file;                                // of a recorded one

    // What messages name.
    [[nodiscard]] const std::string& subject() const noexcept { return file.empty() ? name : file; }
};

// Reads sim, sim:STEP,STEP,..., replay:FILE, surface or /dev/hidrawN. Throws std::invalid_argument with what is wrong.
[[nodiscard]] DeviceChoice parseDevice(std::string_view text);

// The surfaces on this machine, at least one. Throws std::runtime_error where there is none.
[[nodiscard]] std::vector<HidrawNode> findSurfaces();

// A device that the platform knows while this lives, and the accelerometers beside it: a made-up one of a simulated
// surface, those of this machine for a real one.
class ConnectedDevice {
public:
    // `speed` is a factor on the device's own pace. Throws std::runtime_error and what reading a recording throws.
    ConnectedDevice(const DeviceChoice& choice, double speed);
    ConnectedDevice(const ConnectedDevice&) = delete;
    ConnectedDevice& operator=(const ConnectedDevice&) = delete;
    ~ConnectedDevice();

    // As given, or the node's path where that says which.
    [[nodiscard]] const std::string& name() const noexcept { return _choice.name; }
    [[nodiscard]] HIDDeviceBackend& backend() const noexcept { return *_backend; }
    [[nodiscard]] io_service_t service() const noexcept { return _service; }

private:
    const DeviceChoice _choice;
    const Ref<HIDDeviceBackend> _backend;
    const std::vector<Ref<HIDEventService>> _accelerometers;
    const io_service_t _service;
};

} // namespace VeltoTouch::Velto
