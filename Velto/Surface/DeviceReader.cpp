#include "Velto/Surface/DeviceReader.h"

#include "Platform/Linux/RunLoop.h"
#include "Platform/Thread.h"
#include "Velto/Surface/NodeRights.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

namespace VeltoTouch::Surface {
namespace {

constexpr const char* kMode = "velto reader";
constexpr std::size_t kReportRoom = 512;           // as the service has
constexpr double kAccelerationIntervalUs = 10'000; // as the service asks for

void open(const ConnectedDevice& device) {
    switch (device.backend().open(0)) {
    case kIOReturnSuccess:
        return;
    case kIOReturnNotPermitted:
        throwMissingRight(device.name());
    case kIOReturnNoDevice:
        throw std::runtime_error("the device has gone");
    default:
        throw std::runtime_error("the device cannot be opened");
    }
}

} // namespace

// What runs on the thread, and how it is stopped.
class DeviceReader::Thread final : public InputReportSink {
public:
    Thread(const ConnectedDevice& device, Handlers handlers) : _device(device), _handlers(std::move(handlers)) {}

    void run() {
        std::exception_ptr failure;
        try {
            read();
        } catch (...) {
            failure = std::current_exception();
        }
        if (!_isStopped)
            _handlers.ended(failure);
        _end.set_value();
    }
    void stop() {
        _isStopped = true;
        _loop->stop();
    }

    [[nodiscard]] std::future<void> end() { return _end.get_future(); }

    [[nodiscard]] std::span<std::uint8_t> buffer() noexcept override { return _buffer; }
    void deliver(std::size_t length, std::uint64_t timeStamp) override {
        _handlers.report(hostTimeOf(timeStamp), std::span(_buffer).first(std::min(length, _buffer.size())));
    }

private:
    void read() {
        _device.backend().removalHandler = [this] { _loop->stop(); };
        const std::vector<RunLoopSource> accelerations = startAccelerometers();
        const RunLoopSource reports = _device.backend().startReports(*_loop, kMode, *this);
        std::ignore = _loop->run(kMode, std::numeric_limits<double>::infinity(), false);
        if (const std::string failure = _device.backend().failure(); !failure.empty())
            throw std::runtime_error(failure);
    }

    // An accelerometer that cannot be read leaves a surface without one.
    [[nodiscard]] std::vector<RunLoopSource> startAccelerometers() {
        std::vector<RunLoopSource> sources;
        for (const Ref<HIDEventService>& accelerometer : _device.accelerometers()) {
            std::ignore = accelerometer->setProperty("ReportInterval", Number::withDouble(kAccelerationIntervalUs));
            const auto take = [this](const Ref<HIDEvent>& event) { deliver(*event); };
            sources.push_back(accelerometer->startEvents(*_loop, kMode, take));
        }
        return sources;
    }
    void deliver(const HIDEvent& event) const {
        const auto axis = [&event](IOHIDEventField field) {
            return static_cast<float>(IOHIDEventGetFloatValue(&event, field));
        };
        _handlers.acceleration(hostTimeOf(IOHIDEventGetTimeStamp(&event)), axis(kIOHIDEventFieldAccelerometerX),
                               axis(kIOHIDEventFieldAccelerometerY), axis(kIOHIDEventFieldAccelerometerZ));
    }

    const ConnectedDevice& _device;
    const Handlers _handlers;
    Ref<RunLoop> _loop = makeRef<RunLoop>();
    std::atomic<bool> _isStopped{false};
    std::promise<void> _end;
    std::array<std::uint8_t, kReportRoom> _buffer{};
};

DeviceReader::DeviceReader(const ConnectedDevice& device, Handlers handlers)
    : _backend(device.backend()), _thread(std::make_shared<Thread>(device, std::move(handlers))), _end(_thread->end()) {
    open(device);
    NSThread::detachNewThreadWithBlock("velto reader", [thread = _thread] { thread->run(); });
}

DeviceReader::~DeviceReader() {
    _thread->stop();
    _end.wait();
    _backend.close(0);
}

} // namespace VeltoTouch::Surface
