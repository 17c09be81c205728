#pragma once

#include "Platform/IOReturn.h"
#include "Platform/RunLoop.h"
#include "Platform/Value.h"

// HID devices as a plug-in sees them: it makes an IOHIDDevice for the service handle of a device and works with it
// through the calls below. Every call tolerates a null device: null, false or an error status.

namespace VeltoTouch {

enum IOHIDReportType : std::uint32_t {
    kIOHIDReportTypeInput = 0,
    kIOHIDReportTypeOutput = 1,
    kIOHIDReportTypeFeature = 2,
};

class HIDDevice : public Object {};
using IOHIDDeviceRef = HIDDevice*;

// Makes a device object for a service handle. Returns null if no device is registered under the handle.
[[nodiscard]] Ref<HIDDevice> IOHIDDeviceCreate(CFTypeRef allocator, io_service_t service);

// Open and close the device. Any thread.
[[nodiscard]] IOReturn IOHIDDeviceOpen(IOHIDDeviceRef device, IOOptionBits options);
IOReturn IOHIDDeviceClose(IOHIDDeviceRef device, IOOptionBits options);

using IOHIDReportWithTimeStampCallback = void (*)(void* context, IOReturn result, void* sender, IOHIDReportType type,
                                                  std::uint32_t reportID, std::uint8_t* report, CFIndex reportLength,
                                                  std::uint64_t timeStamp);

// Sets the buffer for reports (`report`, which the caller keeps) and the callback for each; a null callback ends them.
// `sender` is the device. A report that is longer than the buffer is cut off. On the thread of the run loop.
void IOHIDDeviceRegisterInputReportWithTimeStampCallback(IOHIDDeviceRef device, std::uint8_t* report,
                                                         CFIndex reportLength,
                                                         IOHIDReportWithTimeStampCallback callback, void* context);

// Binds the device's reports to a mode of a run loop, and unbinds them. A device that cannot be read is logged and adds
// no source. On the thread of that loop.
void IOHIDDeviceScheduleWithRunLoop(IOHIDDeviceRef device, CFRunLoopRef loop, CFStringRef mode);
void IOHIDDeviceUnscheduleFromRunLoop(IOHIDDeviceRef device, CFRunLoopRef loop, CFStringRef mode);

// Reads a report into `report`. `reportLength`: in the buffer's size, out the length that the device gives, which may
// be more. Any thread.
[[nodiscard]] IOReturn IOHIDDeviceGetReport(IOHIDDeviceRef device, IOHIDReportType type, std::uint32_t reportID,
                                            std::uint8_t* report, CFIndex* reportLength);

// Return the value under a key, nil if there is none, and whether the device has taken a value. Any thread.
[[nodiscard]] Ref<Value> IOHIDDeviceGetProperty(IOHIDDeviceRef device, CFStringRef key);
[[nodiscard]] bool IOHIDDeviceSetProperty(IOHIDDeviceRef device, CFStringRef key, CFPropertyListRef value);

} // namespace VeltoTouch
