#include "Plugin/Service/VeltoHIDService.h"

#include "Plugin/Service/VeltoIUnknown.h"

namespace VeltoTouch {

VeltoHIDService::VeltoHIDService()
    : _pluginInterface(new IOCFPlugInInterfaceStruct{
          ._reserved = this,
          .QueryInterface = VeltoIUnknown::QueryInterface,
          .AddRef = VeltoIUnknown::AddRef,
          .Release = VeltoIUnknown::Release,
          .version = 1,
          .revision = 0,
          .Probe = VeltoIUnknown::Probe,
          .Start = VeltoIUnknown::Start,
          .Stop = VeltoIUnknown::Stop,
      }),
      _serviceInterface(new IOHIDServiceInterface2{
          ._reserved = this,
          .QueryInterface = VeltoIUnknown::QueryInterface,
          .AddRef = VeltoIUnknown::AddRef,
          .Release = VeltoIUnknown::Release,
          .open = VeltoIUnknown::open,
          .close = VeltoIUnknown::close,
          .copyProperty = VeltoIUnknown::copyProperty,
          .setProperty = VeltoIUnknown::setProperty,
          .setEventCallback = VeltoIUnknown::setEventCallback,
          .scheduleWithDispatchQueue = VeltoIUnknown::scheduleWithDispatchQueue,
          .unscheduleFromDispatchQueue = VeltoIUnknown::unscheduleFromDispatchQueue,
          .copyEvent = VeltoIUnknown::copyEvent,
          .setOutputEvent = VeltoIUnknown::setOutputEvent,
      }) {}

VeltoHIDService::~VeltoHIDService() {
    delete _serviceInterface;
    delete _pluginInterface;
}

IOReturn VeltoHIDService::probeWithServicePropertiesOutScore(io_service_t /*service*/, CFDictionaryRef /*properties*/,
                                                             std::int32_t* /*score*/) {
    return kIOReturnUnsupported;
}

IOReturn VeltoHIDService::startWithServiceProperties(io_service_t /*service*/, CFDictionaryRef /*properties*/) {
    return kIOReturnUnsupported;
}

IOReturn VeltoHIDService::stop() { return kIOReturnUnsupported; }

bool VeltoHIDService::openWithOptions(IOOptionBits /*options*/) { return false; }

void VeltoHIDService::closeWithOptions(IOOptionBits /*options*/) {}

Ref<Value> VeltoHIDService::getPropertyForKey(CFStringRef /*key*/) { return nullptr; }

bool VeltoHIDService::setPropertyForKey(CFPropertyListRef /*value*/, CFStringRef /*key*/) { return false; }

void VeltoHIDService::setEventCallbackTargetRefcon(IOHIDServiceEventCallback /*callback*/, void* /*target*/,
                                                   void* /*refcon*/) {}

void VeltoHIDService::scheduleWithDispatchQueue(dispatch_queue_t /*queue*/) {}

void VeltoHIDService::unscheduleWithDispatchQueue(dispatch_queue_t /*queue*/) {}

Ref<HIDEvent> VeltoHIDService::copyEventWithTypeMatchingOptions(std::uint32_t /*eventType*/, IOHIDEventRef /*matching*/,
                                                                IOOptionBits /*options*/) {
    return nullptr;
}

IOReturn VeltoHIDService::setOutputEvent(IOHIDEventRef /*event*/) { return kIOReturnUnsupported; }

} // namespace VeltoTouch
