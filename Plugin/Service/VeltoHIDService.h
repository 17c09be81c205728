#pragma once

#include "Platform/PlugIn.h"

namespace VeltoTouch {

// Base of a HID service: owns the two tables of functions through which its host calls it, and gives every operation
// of the host a default that does nothing. The tables hold the object's address without a reference and live as long
// as it does.
class VeltoHIDService : public Object {
public:
    // The interface handles, without a reference.
    [[nodiscard]] IOCFPlugInInterfaceStruct* const* getPluginInterface() const noexcept { return &_pluginInterface; }
    [[nodiscard]] IOHIDServiceInterface2* const* getServiceInterface() const noexcept { return &_serviceInterface; }

    // The host's operations, on any of its threads. Called through the tables alone; PlugIn.h says in which order.
    virtual IOReturn probeWithServicePropertiesOutScore(io_service_t service, CFDictionaryRef properties,
                                                        std::int32_t* score);
    virtual IOReturn startWithServiceProperties(io_service_t service, CFDictionaryRef properties);
    virtual IOReturn stop();
    virtual bool openWithOptions(IOOptionBits options);
    virtual void closeWithOptions(IOOptionBits options);
    [[nodiscard]] virtual Ref<Value> getPropertyForKey(CFStringRef key);
    virtual bool setPropertyForKey(CFPropertyListRef value, CFStringRef key);
    virtual void setEventCallbackTargetRefcon(IOHIDServiceEventCallback callback, void* target, void* refcon);
    virtual void scheduleWithDispatchQueue(dispatch_queue_t queue);
    virtual void unscheduleWithDispatchQueue(dispatch_queue_t queue);
    [[nodiscard]] virtual Ref<HIDEvent> copyEventWithTypeMatchingOptions(std::uint32_t eventType,
                                                                         IOHIDEventRef matching, IOOptionBits options);
    virtual IOReturn setOutputEvent(IOHIDEventRef event);

protected:
    VeltoHIDService();
    ~VeltoHIDService() override;

private:
    IOCFPlugInInterfaceStruct* _pluginInterface;
    IOHIDServiceInterface2* _serviceInterface;
};

} // namespace VeltoTouch
