#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Clock.h"
#include "Platform/Linux/RunLoop.h"
#include "Tests/Support/Mailbox.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <map>
#include <optional>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

namespace VeltoTouch::Tests {

// A device that a test plays by hand:
//
//   const auto device = makeRef<TestDevice>();
//   const io_service_t service = registerDevice(device);
//   ... whoever is tested makes an IOHIDDevice of the service and schedules it with a run loop ...
//   device->deliverAndWait(imageReport(image));
//
// It is also the shortest backend there is, to be copied by who writes one.
class TestDevice final : public HIDDeviceBackend {
public:
    using Report = std::vector<std::uint8_t>;

    // What the device answers to a request for a feature report.
    struct FeatureReport {
        Report bytes; // as many as fit are put into the buffer
        IOReturn status = kIOReturnSuccess;
        std::optional<std::size_t> claimedLength = std::nullopt; // in place of the number of bytes
    };

    // What the calls give, and what they were given. Any thread.
    std::atomic<IOReturn> openResult{kIOReturnSuccess};
    std::atomic<bool> failsToStart{false};
    static constexpr std::int64_t kNever = -1;
    std::atomic<std::int64_t> openedWith{kNever}; // the options of the last call
    std::atomic<std::int64_t> closedWith{kNever};
    std::atomic<bool> isRead{false}; // a source of a run loop waits for its reports

    std::atomic<std::size_t> lastRoom{0}; // that a request for a report gave

    std::function<void()> whenRead = [] {};  // before it is, on the thread that will; set before it is scheduled
    std::function<void()> whenAsked = [] {}; // during a request for a report, on its thread; set before there are any

    // The device's own stamp on every report. It is no time at all: nobody may take it for one.
    static constexpr std::uint64_t kStamp = 12'345;

    // Answers requests for the feature report with this ID; the others get kIOReturnUnsupported and length 0.
    void setFeatureReport(std::uint32_t reportID, FeatureReport report) {
        const MutexLock guard(_lock);
        _featureReports[reportID] = std::move(report);
    }
    // Gives the device a property. Others may change it if it is settable.
    void giveProperty(const std::string& key, const Ref<Value>& value, bool isSettable = false) {
        const MutexLock guard(_lock);
        _properties[key] = value;
        if (isSettable)
            _settableKeys.insert(key);
    }

    // Sends an input report from any thread, for the device's run loop to hand on. A device that is not scheduled keeps
    // it until then, one that has gone drops it.
    void deliver(const Report& report) { _reports.post(report); }

    // The same, but returns when the callback has returned. Not from the thread of the run loop.
    void deliverAndWait(const Report& report) {
        const auto handled = dispatch_semaphore_create(0);
        if (_reports.post(report, handled))
            handled->wait();
    }

    // One after the other, each as deliverAndWait does.
    void deliverAll(const std::vector<Report>& reports) {
        for (const Report& report : reports)
            deliverAndWait(report);
    }

    // The device goes: `removalHandler` is called, and its source leaves its mode after the reports under way.
    void unplug() {
        _reports.close();
        if (!_isGone.exchange(true))
            removalHandler();
    }

    [[nodiscard]] IOReturn open(IOOptionBits options) override {
        openedWith = options;
        return openResult;
    }
    void close(IOOptionBits options) override { closedWith = options; }

    [[nodiscard]] RunLoopSource startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) override {
        if (failsToStart)
            throw std::system_error(ENODEV, std::generic_category(), "test device");
        whenRead();
        isRead = true;
        const std::shared_ptr<TestDevice> reading(this, [](TestDevice* device) { device->isRead = false; });
        return _reports.open(loop, mode, [&sink, reading](const Report& report) {
            const auto buffer = sink.buffer();
            std::copy_n(report.begin(), std::min(report.size(), buffer.size()), buffer.begin());
            sink.deliver(report.size(), kStamp);
        });
    }

    [[nodiscard]] IOReturn getReport(IOHIDReportType type, std::uint32_t reportID, std::span<std::uint8_t> buffer,
                                     std::size_t& length) override {
        lastRoom = buffer.size();
        whenAsked();
        const MutexLock guard(_lock);
        const auto known = _featureReports.find(reportID);
        if (type != kIOHIDReportTypeFeature || known == _featureReports.end()) {
            length = 0;
            return kIOReturnUnsupported;
        }
        const auto& [bytes, status, claimedLength] = known->second;
        std::copy_n(bytes.begin(), std::min(bytes.size(), buffer.size()), buffer.begin());
        length = claimedLength.value_or(bytes.size());
        return status;
    }

    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override {
        const MutexLock guard(_lock);
        const auto known = _properties.find(key);
        return known == _properties.end() ? nullptr : known->second;
    }
    [[nodiscard]] bool setProperty(const std::string& key, const Ref<Value>& value) override {
        const MutexLock guard(_lock);
        if (!_settableKeys.contains(key))
            return false;
        _properties[key] = value;
        return true;
    }

private:
    Mailbox<Report> _reports;
    std::atomic<bool> _isGone{false};
    Mutex _lock;
    std::map<std::uint32_t, FeatureReport> _featureReports VELTO_GUARDED_BY(_lock);
    std::map<std::string, Ref<Value>> _properties VELTO_GUARDED_BY(_lock);
    std::set<std::string> _settableKeys VELTO_GUARDED_BY(_lock);
};

} // namespace VeltoTouch::Tests
