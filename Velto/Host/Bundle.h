#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/PlugIn.h"

#include <string>

namespace VeltoTouch {

// A HID service plug-in on disk: a folder with a manifest and a loadable module.
//
//   Info.json   {"CFBundleExecutable": the module's file name, in the same folder,
//                "CFPlugInTypes": {plug-in type UUID: [factory UUID, ...]},
//                "CFPlugInFactories": {factory UUID: the name of the function that the module exports},
//                "HIDMatching": {property: value, ...} of the devices that the service is for}
class Bundle {
public:
    // Reads the manifest. Throws std::runtime_error with its fault.
    explicit Bundle(std::string folder);

    // Returns the properties that a device must have for the service.
    [[nodiscard]] CFDictionaryRef matching() const noexcept { return _matching.get(); }
    // Returns whether the device has them all.
    [[nodiscard]] bool matches(HIDDeviceBackend& device) const;

    // Loads the module and finds its factory for HID services. The module stays loaded until the process ends: code of
    // its own may still be queued or running after the last service is released. Throws std::runtime_error with the
    // fault.
    [[nodiscard]] CFPlugInFactoryFunction loadFactory() const;

private:
    std::string _folder;
    std::string _executable;
    std::string _factoryName;
    Ref<const Dictionary> _matching;
};

} // namespace VeltoTouch
