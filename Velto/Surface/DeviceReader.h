#pragma once

#include "Velto/Host/HostTime.h"
#include "Velto/Surface/ConnectedDevice.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <span>

namespace VeltoTouch::Surface {

// Reads a device's input reports, and events of the accelerometers beside it, on a thread of its own. The device may
// have other readers.
class DeviceReader {
public:
    // Called on the reader's thread. `time`: the backend's stamp: when it was read, or what a piped stream says. They
    // may wait, but not for ever; they must not throw.
    struct Handlers {
        std::function<void(HostTime time, std::span<const std::uint8_t> report)> report; // the report ID first
        std::function<void(HostTime time, float x, float y, float z)> acceleration;      // in g
        // The last call: the device has gone, or what made reading fail. Not called if this is destroyed before.
        std::function<void(std::exception_ptr failure)> ended;
    };

    // Opens the device, which outlives this, and begins to read. Throws std::runtime_error if it cannot be opened.
    DeviceReader(const ConnectedDevice& device, Handlers handlers);
    DeviceReader(const DeviceReader&) = delete;
    DeviceReader& operator=(const DeviceReader&) = delete;
    // Waits for the thread, which finishes the call in progress.
    ~DeviceReader();

private:
    class Thread;

    HIDDeviceBackend& _backend;
    std::shared_ptr<Thread> _thread;
    std::future<void> _end;
};

} // namespace VeltoTouch::Surface
