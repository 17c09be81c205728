#pragma once

#include "Platform/IOReturn.h"
#include "Platform/RunLoop.h"
#include "Platform/Value.h"

#include <functional>
#include <span>

// HID devices. A backend is the device itself: a simulated one, a recording's player, a real one. The registry gives
// it a service handle; a plug-in makes an IOHIDDevice for that handle and works with it through the calls below.
// Every call of the family tolerates a null device: null, false or an error status.

namespace VeltoTouch {

enum IOHIDReportType : std::uint32_t {
    kIOHIDReportTypeInput = 0,
    kIOHIDReportTypeOutput = 1,
    kIOHIDReportTypeFeature = 2,
};

// Where a backend puts its input reports.
class InputReportSink {
public:
    // Room for one report, the report ID first.
    [[nodiscard]] virtual std::span<std::uint8_t> buffer() noexcept = 0;
    // Hands on the first `length` bytes of the buffer (what is beyond it is cut off). `timeStamp`: host ticks.
    virtual void deliver(std::size_t length, std::uint64_t timeStamp) = 0;

protected:
    ~InputReportSink() = default;
};

// A device. Reports come on the run loop's thread; everything else may be called from any thread, at any time.
class HIDDeviceBackend : public Object {
public:
    [[nodiscard]] virtual IOReturn open(IOOptionBits options) = 0;
    virtual void close(IOOptionBits options) = 0;

    // Adds a source to a mode of the calling thread's run loop that puts every input report into `sink`, one call of
    // the source a report. A device that goes takes its source out of the mode; one that has gone gives an empty
    // source. `sink` outlives the source. One at a time. May throw std::system_error.
    [[nodiscard]] virtual RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) = 0;

    // Fills `buffer` with the report (ID first) and sets `length` to its length.
    [[nodiscard]] virtual IOReturn getReport(IOHIDReportType type, std::uint32_t reportID,
                                             std::span<std::uint8_t> buffer, std::size_t& length) = 0;

    // The value under a key, or nil.
    [[nodiscard]] virtual Ref<Value> getProperty(const std::string& key) = 0;
    // Whether the device has taken the value.
    [[nodiscard]] virtual bool setProperty(const std::string& key, const Ref<Value>& value) = 0;

    // Called once, when the device has gone, on whatever thread saw it go. Set before the device is used.
    std::function<void()> removalHandler = [] {};

    // The input reports that were delivered so far. Any thread.
    [[nodiscard]] std::uint64_t deliveredReports() const noexcept { return _delivered; }

private:
    friend class OpenableDevice;
    std::atomic<std::uint64_t> _delivered{0};
};

// Gives a device a service handle, which is never 0 and never given again. Any thread.
[[nodiscard]] io_service_t registerDevice(Ref<HIDDeviceBackend> backend);
// Takes the handle back; an IOHIDDevice that was made for it stays. Any thread.
void unregisterDevice(io_service_t service);

class HIDDevice : public Object {};
using IOHIDDeviceRef = HIDDevice*;

// A device object for a service handle; null for a handle that nothing is registered under.
[[nodiscard]] Ref<HIDDevice> IOHIDDeviceCreate(CFTypeRef allocator, io_service_t service);

[[nodiscard]] IOReturn IOHIDDeviceOpen(IOHIDDeviceRef device, IOOptionBits options);
IOReturn IOHIDDeviceClose(IOHIDDeviceRef device, IOOptionBits options);

using IOHIDReportWithTimeStampCallback = void (*)(void* context, IOReturn result, void* sender, IOHIDReportType type,
                                                  std::uint32_t reportID, std::uint8_t* report, CFIndex reportLength,
                                                  std::uint64_t timeStamp);

// Says where reports are put (`report`, which stays the caller's) and who is told of each; a null callback ends that.
// `sender` is the device. A report that is longer than the buffer is cut off. On the thread of the run loop.
void IOHIDDeviceRegisterInputReportWithTimeStampCallback(IOHIDDeviceRef device, std::uint8_t* report,
                                                         CFIndex reportLength,
                                                         IOHIDReportWithTimeStampCallback callback, void* context);

// Binds the device's reports to a mode of a run loop, and unbinds them. On the thread of that loop. A device that
// cannot be read is logged and adds no source.
void IOHIDDeviceScheduleWithRunLoop(IOHIDDeviceRef device, CFRunLoopRef loop, CFStringRef mode);
void IOHIDDeviceUnscheduleFromRunLoop(IOHIDDeviceRef device, CFRunLoopRef loop, CFStringRef mode);

// Reads a report into `report`. `reportLength`: in the room, out the length that the device gives, which may be more.
// Any thread.
[[nodiscard]] IOReturn IOHIDDeviceGetReport(IOHIDDeviceRef device, IOHIDReportType type, std::uint32_t reportID,
                                            std::uint8_t* report, CFIndex* reportLength);

// Any thread.
[[nodiscard]] Ref<Value> IOHIDDeviceGetProperty(IOHIDDeviceRef device, CFStringRef key);
[[nodiscard]] bool IOHIDDeviceSetProperty(IOHIDDeviceRef device, CFStringRef key, CFPropertyListRef value);

} // namespace VeltoTouch
