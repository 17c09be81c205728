#pragma once

#include "Platform/Dispatch.h"
#include "Platform/HIDEvent.h"
#include "Platform/IOReturn.h"
#include "Platform/UUID.h"
#include "Platform/Value.h"

#include <cstdint>

// The boundary between a host and a HID service plug-in: the host calls the factory that the plug-in's manifest names,
// gets an interface handle, asks it for further interfaces, and calls the service through tables of functions.
//
// A handle is the address of a pointer to a table. Every function's first argument is the handle that it was found by.
//
// One life of a service:
//
//   factory, QueryInterface           a reference for each handle
//   Probe, Start                      the service makes its device
//     open, setEventCallback
//     scheduleWithDispatchQueue       events begin
//     unscheduleFromDispatchQueue     events end: none is queued after it returns
//     draining the queue              what was queued has reached the callback
//     close
//   Stop                              the service lets its device go
//   Release, for each handle
//
// These calls are made one at a time: each begins when the one before it has returned, on any thread. open to close lie
// between a Start that succeeded and its Stop. Start to Stop, open to close and schedule to unschedule may be repeated.
// No call fails the process for want of a device.
//
// Any thread, at any time, beside each other and beside the calls above, while the caller holds a reference:
// QueryInterface, AddRef, Release, copyProperty, setProperty, copyEvent, setOutputEvent. A property that asks the
// device may wait for it. Stop does not wait for that: the request ends with the device that it began with.
//
// After unscheduling:
// - Events that are still queued reach the callback with target, refcon and `sender`, a handle without a reference: the
//   queue must be drained before the last Release, and before target or refcon go.
// - The service's thread may be on its last instructions. It holds references of its own to the service and the queue:
//   the last one may go on that thread, after the host's Release.
// - The module stays loaded: closing it (dlclose) is allowed at any time and unloads nothing. Its thread and queued
//   tasks may run in it until the process ends.

namespace VeltoTouch {

using HRESULT = std::int32_t;
using ULONG = std::uint32_t;
using REFIID = CFUUIDBytes; // by value

constexpr HRESULT S_OK = 0;
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80000004U);

// The type that a host asks a factory for, and the two interfaces of a service.
extern const CFUUIDRef kIOHIDServicePlugInTypeID; // 0516B563-B15B-11DA-96EB-0014519758EF
extern const CFUUIDRef kIOCFPlugInInterfaceID;    // C244E858-109C-11D4-91D4-0050E4C6426F: IOCFPlugInInterfaceStruct
extern const CFUUIDRef kIOHIDServiceInterface2ID; // 6FE22ABF-68B9-11DB-A71F-0016CBC110F7: IOHIDServiceInterface2

// The exported factory: returns a new service's plug-in interface handle with one reference, which the host releases,
// or null for a type that the plug-in does not make.
using CFPlugInFactoryFunction = void* (*)(CFTypeRef allocator, CFUUIDRef type);

// Called for each event, one after the other, on the queue that the service is scheduled with.
using IOHIDServiceEventCallback = void (*)(void* target, void* refcon, void* sender, IOHIDEventRef event,
                                           IOOptionBits options);

struct IOCFPlugInInterfaceStruct {
    void* _reserved;

    // A handle of the interface asked for, with a reference that the caller releases, or E_NOINTERFACE and `*handle`
    // untouched.
    HRESULT (*QueryInterface)(void* self, REFIID interfaceID, void** handle);
    // The count of references after the call, those that the service's own thread holds included.
    ULONG (*AddRef)(void* self);
    ULONG (*Release)(void* self);

    std::uint16_t version;
    std::uint16_t revision;

    // `service` is the handle of the device that the service is to work with. kIOReturnSuccess, or why not.
    //
    // Whether the plug-in serves the device. `*order` ranks plug-ins that want the same one; VeltoTouch wants any and
    // leaves it as it is.
    IOReturn (*Probe)(void* self, CFDictionaryRef propertyTable, io_service_t service, std::int32_t* order);
    // kIOReturnNoResources for a handle that no device has.
    IOReturn (*Start)(void* self, CFDictionaryRef propertyTable, io_service_t service);
    IOReturn (*Stop)(void* self);
};

struct IOHIDServiceInterface2 {
    void* _reserved;

    HRESULT (*QueryInterface)(void* self, REFIID interfaceID, void** handle);
    ULONG (*AddRef)(void* self);
    ULONG (*Release)(void* self);

    // Whether the device could be opened.
    bool (*open)(void* self, IOOptionBits options);
    void (*close)(void* self, IOOptionBits options);
    // A value with a reference that the caller releases, or null.
    CFPropertyListRef (*copyProperty)(void* self, CFStringRef key);
    // Whether the value was taken.
    bool (*setProperty)(void* self, CFStringRef key, CFPropertyListRef value);
    // Reaches the next schedule, not one that runs. Target and refcon are handed back to the callback.
    void (*setEventCallback)(void* self, IOHIDServiceEventCallback callback, void* target, void* refcon);
    // Returns when the service's thread has its run loop. The queue is serial.
    void (*scheduleWithDispatchQueue)(void* self, dispatch_queue_t queue);
    // Returns when the service's thread has let go of the device.
    void (*unscheduleFromDispatchQueue)(void* self, dispatch_queue_t queue);
    // An event with a reference that the caller releases, or null. VeltoTouch keeps none: null.
    IOHIDEventRef (*copyEvent)(void* self, std::uint32_t eventType, IOHIDEventRef matching, IOOptionBits options);
    // kIOReturnSuccess, or why not. VeltoTouch takes none: kIOReturnUnsupported.
    IOReturn (*setOutputEvent)(void* self, IOHIDEventRef event);
};

} // namespace VeltoTouch
