#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Linux/FileDescriptor.h"
#include "Platform/Linux/RunLoop.h"
#include "Platform/Mutex.h"

#include <atomic>
#include <memory>
#include <string>

namespace VeltoTouch {

// A HID device of the Linux kernel, /dev/hidrawN. It is the device that the node was when this was made: once that has
// gone, another one under the same name is no matter of this object.
//
// Its properties are those of Platform/Linux/HidrawProperties.h, read once when this is made; none can be set.
class HidrawDevice final : public HIDDeviceBackend {
public:
    // Throws std::system_error where the node cannot be opened for reading, and for a file that is no hidraw node. The
    // message leaves it to the caller to name the path.
    explicit HidrawDevice(std::string path);

    // kIOReturnNoDevice where the device has gone, kIOReturnNotPermitted where it may not be read and written. A second
    // call opens it anew. The kernel hands every report to everyone who reads the device and lets nobody have it
    // alone, so that the option to seize it (bit 0) is taken, and changes nothing.
    [[nodiscard]] IOReturn open(IOOptionBits options) override;
    // Reports that have been started go on until their source goes.
    void close(IOOptionBits options) override;

    // Throws std::system_error (ENOTCONN) while the device is not open. The kernel keeps 63 reports for who is late and
    // drops what comes then. Those that came before the device went are handed on, then `removalHandler` is called on
    // the loop's thread; a device whose reports nobody reads goes without a word.
    [[nodiscard]] RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) override;

    // Feature and input reports; the latter are asked for, which does not touch those that come by themselves. May take
    // as long as the device does (the kernel gives it some seconds), without holding up anyone else. The kernel cuts a
    // longer report to the buffer, which must have room for two bytes. kIOReturnNotOpen while the device is not open,
    // kIOReturnError where it refuses the report, kIOReturnNoDevice once it has gone.
    [[nodiscard]] IOReturn getReport(IOHIDReportType type, std::uint32_t reportID, std::span<std::uint8_t> buffer,
                                     std::size_t& length) override;

    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override { return _properties->value(key); }
    [[nodiscard]] bool setProperty(const std::string& /*key*/, const Ref<Value>& /*value*/) override { return false; }

private:
    // The open node stays open for whoever uses it while it is closed.
    using Node = std::shared_ptr<const FileDescriptor>;

    [[nodiscard]] Node node();
    void setNode(Node node);
    void readReport(int node, InputReportSink& sink);
    void noteRemoval();

    const std::string _path;
    const Ref<Dictionary> _properties;
    std::atomic<bool> _hasGone{false};

    Mutex _lock;
    Node _node VELTO_GUARDED_BY(_lock); // null: not open
};

} // namespace VeltoTouch
