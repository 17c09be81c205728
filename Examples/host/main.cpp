// A host in one file: puts a device of its own in front of the touch service, taps on it, and shows the events. It
// calls the service through its two tables, in the order in which a host does; whatever fails, what was begun is ended.

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Clock.h"
#include "Platform/JSON.h"
#include "Platform/PlugIn.h"
#include "Plugin/Reports/InputReport.h"
#include "Velto/Host/Bundle.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <stdexcept>
#include <utility>

using namespace VeltoTouch;

namespace {

constexpr std::uint64_t kScanPeriodTicks = 10'000'000;
constexpr std::uint32_t kScanPeriodMs = 10;

// A surface that is tapped once: a finger lies on it from the fifth scan to the twelfth.
class TappedSurface final : public HIDDeviceBackend {
public:
    IOReturn open(IOOptionBits /*options*/) override { return kIOReturnSuccess; }
    void close(IOOptionBits /*options*/) override {}

    RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) override {
        return loop.addTimer(mode, mach_absolute_time(), [this, &sink]() -> std::optional<std::uint64_t> {
            sendScan(sink);
            return mach_absolute_time() + kScanPeriodTicks;
        });
    }

    IOReturn getReport(IOHIDReportType /*type*/, std::uint32_t /*reportID*/, std::span<std::uint8_t> /*buffer*/,
                       std::size_t& length) override {
        length = 0;
        return kIOReturnUnsupported;
    }

    Ref<Value> getProperty(const std::string& key) override {
        if (key == "PrimaryUsagePage")
            return Number::withUnsignedInt(0xFF60);
        return key == "PrimaryUsage" ? Number::withUnsignedInt(1) : nullptr;
    }
    bool setProperty(const std::string& /*key*/, const Ref<Value>& /*value*/) override { return false; }

private:
    void sendScan(InputReportSink& sink) {
        InputReport::Image image{};
        image.frameNumber = ++_scan;
        image.timestampMs = _scan * kScanPeriodMs;
        if (_scan >= 5 && _scan <= 12) {
            image.padSignal['E' - 'A'] = 150;
            image.padSignal['F' - 'A'] = 60;
            image.padSignal['K' - 'A'] = 40;
        }
        const auto buffer = sink.buffer();
        buffer[0] = InputReport::Image::kReportID;
        std::memcpy(&buffer[1], &image, sizeof image);
        sink.deliver(InputReport::kImageReportLength, mach_absolute_time());
    }

    std::uint32_t _scan = 0;
};

// Takes a step when its scope is left, by an exception as well.
template <class Step>
class Finally {
public:
    explicit Finally(Step step) : _step(std::move(step)) {}
    Finally(const Finally&) = delete;
    Finally& operator=(const Finally&) = delete;
    ~Finally() { _step(); }

private:
    Step _step;
};

// On the host's queue.
void showEvent(void* target, void* /*refcon*/, void* /*sender*/, IOHIDEventRef event, IOOptionBits /*options*/) {
    std::printf("%s\n", IOHIDEventCopyDescription(event).c_str());
    if (IOHIDEventGetIntegerValue(event, kIOHIDEventFieldDigitizerEventMask) == kIOHIDDigitizerEventTap)
        dispatch_semaphore_signal(static_cast<dispatch_semaphore_t>(target));
}

void run(const char* plugIn) {
    const auto surface = makeRef<TappedSurface>();
    const io_service_t device = registerDevice(surface);
    const Finally unregistered([&] { unregisterDevice(device); });
    const Bundle bundle(plugIn);
    if (!bundle.matches(*surface))
        throw std::runtime_error("the plug-in is not for this device");

    auto** const plug =
        static_cast<IOCFPlugInInterfaceStruct**>(bundle.loadFactory()(nullptr, kIOHIDServicePlugInTypeID));
    if (plug == nullptr)
        throw std::runtime_error("no HID service");
    const Finally plugReleased([&] { (*plug)->Release(plug); });
    void* handle = nullptr;
    if ((*plug)->QueryInterface(plug, kIOHIDServiceInterface2ID->bytes(), &handle) != S_OK)
        throw std::runtime_error("no HID service interface");
    auto** const service = static_cast<IOHIDServiceInterface2**>(handle);
    const Finally serviceReleased([&] { (*service)->Release(service); });

    std::int32_t order = 0;
    if ((*plug)->Probe(plug, bundle.matching(), device, &order) != kIOReturnSuccess ||
        (*plug)->Start(plug, bundle.matching(), device) != kIOReturnSuccess)
        throw std::runtime_error("the service does not start");
    const Finally stopped([&] { (*plug)->Stop(plug); });
    if (!(*service)->open(service, 0))
        throw std::runtime_error("the device cannot be opened");
    const Finally closed([&] { (*service)->close(service, 0); });

    const auto tapped = dispatch_semaphore_create(0);
    const auto queue = dispatch_queue_create("example host");
    const auto timeoutKey = makeRef<String>("Pipeline.Algs.HoldTimeoutMilliseconds");
    (*service)->setProperty(service, timeoutKey.get(), Number::withUnsignedInt(400).get());
    (*service)->setEventCallback(service, showEvent, tapped.get(), nullptr);
    (*service)->scheduleWithDispatchQueue(service, queue.get());
    const Finally unscheduled([&] {
        (*service)->unscheduleFromDispatchQueue(service, queue.get());
        dispatch_sync(queue.get(), [] {}); // events that are still queued
    });
    dispatch_semaphore_wait(tapped.get());

    const auto debugKey = makeRef<String>("Pipeline.DebugInfo");
    const auto debugInfo = Ref<Value>::adopt((*service)->copyProperty(service, debugKey.get()));
    std::printf("%s\n", JSON::text(debugInfo.get()).c_str());
}

} // namespace

int main(int argc, char** argv) {
    try {
        run(argc > 1 ? argv[1] : VELTO_PLUGIN);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "example_host: %s\n", error.what());
        return 1;
    }
}
