#pragma once

#include "Platform/HIDDevice.h"
#include "Platform/Linux/RunLoop.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

// What stands beneath an IOHIDDevice: a simulated device, a recording's player, a real one. The registry gives a
// backend its service handle.

namespace VeltoTouch {

// Receives a backend's input reports.
class InputReportSink {
public:
    // Returns the buffer for one report, the report ID first.
    [[nodiscard]] virtual std::span<std::uint8_t> buffer() noexcept = 0;
    // Delivers the first `length` bytes of the buffer; a longer report is cut off. `timeStamp`: host ticks, when the
    // report was read, or what its stream says. It is the report's time at the bench (DeviceReader.h); the service
    // takes the time under its lock and only logs this one.
    virtual void deliver(std::size_t length, std::uint64_t timeStamp) = 0;

protected:
    ~InputReportSink() = default;
};

// A device. Reports are delivered on the run loop's thread; all other operations may be called on any thread.
class HIDDeviceBackend : public Object {
public:
    // Returns kIOReturnSuccess, or why not: kIOReturnNoDevice if it has gone, kIOReturnNotPermitted, kIOReturnBusy,
    // otherwise kIOReturnError.
    [[nodiscard]] virtual IOReturn open(IOOptionBits options) = 0;
    // Lets the device go. Idempotent.
    virtual void close(IOOptionBits options) = 0;

    // Adds a source to a mode of the calling thread's run loop that delivers every input report to `sink`, one report
    // per call of the source. On removal the device takes its source out of the mode; a removed device returns an empty
    // source. `sink` outlives the source. One source at a time. May throw std::system_error.
    [[nodiscard]] virtual RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) = 0;

    // Fills `buffer` with the report, ID first, and sets `length` to its length; what the buffer has no room for is cut
    // off. Returns kIOReturnSuccess, or why not: kIOReturnUnsupported for a report that there is not, kIOReturnNotOpen,
    // or as `open`.
    [[nodiscard]] virtual IOReturn getReport(IOHIDReportType type, std::uint32_t reportID,
                                             std::span<std::uint8_t> buffer, std::size_t& length) = 0;

    // Returns the value under a key, or nil.
    [[nodiscard]] virtual Ref<Value> getProperty(const std::string& key) = 0;
    // Returns whether the device has taken the value.
    [[nodiscard]] virtual bool setProperty(const std::string& key, const Ref<Value>& value) = 0;

    // Returns what ended the reports; empty if the device was just removed, and as long as it is there.
    [[nodiscard]] virtual std::string failure() { return {}; }

    // Called once when the device is removed, on the thread that noticed. Set before the device is used.
    std::function<void()> removalHandler = [] {};

    // Returns the number of input reports delivered so far. Any thread.
    [[nodiscard]] std::uint64_t deliveredReports() const noexcept { return _delivered; }

private:
    friend class OpenableDevice;
    std::atomic<std::uint64_t> _delivered{0};
};

// Registers a device and returns its service handle, which is never 0 and never reused. Any thread.
[[nodiscard]] io_service_t registerDevice(Ref<HIDDeviceBackend> backend);
// Removes a device; an IOHIDDevice that was made for it stays. Any thread.
void unregisterDevice(io_service_t service);
// Returns the device that is registered under a handle, or null. Any thread.
[[nodiscard]] Ref<HIDDeviceBackend> registeredDevice(io_service_t service);

} // namespace VeltoTouch
