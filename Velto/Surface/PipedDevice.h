#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Mutex.h"
#include "Velto/Surface/PlayedDevice.h"
#include "Velto/Surface/ReportStream.h"

#include <string>

namespace VeltoTouch::Surface {

// A device whose reports come through a descriptor, such as the standard input (ReportStream.h). It is removed at the
// stream's end, and where the stream is wrong; `failure` says so then. A report has the stream's time, or that at which
// it was read. It has no feature reports.
class PipedDevice final : public HIDDeviceBackend {
public:
    // The caller keeps the descriptor.
    explicit PipedDevice(int descriptor) noexcept : _descriptor(descriptor) {}

    [[nodiscard]] IOReturn open(IOOptionBits /*options*/) override { return kIOReturnSuccess; }
    void close(IOOptionBits /*options*/) override {}
    [[nodiscard]] RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) override;
    [[nodiscard]] IOReturn getReport(IOHIDReportType /*type*/, std::uint32_t /*reportID*/,
                                     std::span<std::uint8_t> /*buffer*/, std::size_t& /*length*/) override {
        return kIOReturnUnsupported;
    }
    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override { return _properties->value(key); }
    [[nodiscard]] bool setProperty(const std::string& /*key*/, const Ref<Value>& /*value*/) override { return false; }
    [[nodiscard]] std::string failure() override;

private:
    // Returns whether there may be more.
    [[nodiscard]] bool readSome(InputReportSink& sink);
    void end(const std::string& failure);

    const int _descriptor;
    const Ref<Dictionary> _properties = surfaceProperties("Piped Touch Surface", "PIPE-1");

    // The thread of the run loop alone.
    ReportStream _stream;
    bool _hasGone = false;

    Mutex _lock;
    std::string _failure VELTO_GUARDED_BY(_lock);
};

} // namespace VeltoTouch::Surface
