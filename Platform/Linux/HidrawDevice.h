#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Linux/RunLoop.h"
#include "Platform/Mutex.h"

#include <atomic>
#include <memory>
#include <string>

namespace VeltoTouch {

// A HID device of the Linux kernel, /dev/hidrawN. The object stands for the device behind the node at construction: a
// device that later appears under the same name is a different one.
//
// Properties are those of HidrawProperties.h, read once at construction; none can be set.
class HidrawDevice final : public HIDDeviceBackend {
public:
    // Throws std::system_error if the node cannot be opened for reading or is no hidraw node. The message does not name
    // the path.
    explicit HidrawDevice(std::string path);

    // Returns kIOReturnNoDevice if the device is removed, kIOReturnNotPermitted if it may not be read and written. A
    // second call opens it again. The option to seize the device (bit 0) is accepted and has no effect: the kernel
    // delivers every report to every reader.
    [[nodiscard]] IOReturn open(IOOptionBits options) override;
    // Reports continue until their source is destroyed.
    void close(IOOptionBits options) override;

    // Throws std::system_error (ENOTCONN) if the device is not open. The kernel buffers 63 reports per reader and drops
    // the rest. On removal the buffered reports are delivered first, then `removalHandler` is called on the loop's
    // thread. `removalHandler` is called only while reports are being read.
    [[nodiscard]] RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) override;

    // Requests a feature or input report; the reports that the device sends by itself are not affected. Blocks until
    // the device answers (the kernel gives up after some seconds) without blocking other calls. A longer report is cut
    // to the buffer, which must have at least two bytes. Returns kIOReturnNotOpen if the device is not open,
    // kIOReturnError if it refuses the report, kIOReturnNoDevice if it is removed.
    [[nodiscard]] IOReturn getReport(IOHIDReportType type, std::uint32_t reportID, std::span<std::uint8_t> buffer,
                                     std::size_t& length) override;

    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override { return _properties->value(key); }
    [[nodiscard]] bool setProperty(const std::string& /*key*/, const Ref<Value>& /*value*/) override { return false; }

private:
    // Shared: a call in progress keeps the node open while another closes the device.
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
