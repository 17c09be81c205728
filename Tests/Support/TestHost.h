#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/PlugIn.h"
#include "Platform/Testing/LogCapture.h"
#include "Plugin/Algs/Algs.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Plugin/Service/Factory.h"
#include "Tests/Support/EventMatchers.h"
#include "Tests/Support/Reports.h"
#include "Tests/Support/TestDevice.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/Simulation.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {

// The reports of what fingers do on the surface: reportsOf({"tap:play-pause", "hold:volume-up"}).
inline std::vector<Report> reportsOf(const std::vector<std::string>& steps) {
    std::vector<Surface::Step> script;
    for (const std::string& step : steps)
        script.push_back(Surface::parseStep(step));
    Surface::Simulation simulation({}, Surface::scriptOf(std::move(script)));
    std::vector<Report> reports;
    while (const auto report = simulation.next())
        reports.emplace_back(report->bytes().begin(), report->bytes().end());
    return reports;
}

// A host with one service in front of a device that the test plays:
//
//   host.schedule();
//   device->deliver(...);
//   EXPECT_THAT(host.events(), ElementsAre(MayBegin(PlayPause), Tap(PlayPause)));
//
// It reaches the service through the tables alone, and ends it in the stated order when it goes.
class TestHost {
public:
    explicit TestHost(const Ref<TestDevice>& device) : _device(registerDevice(device)) {
        plugIn =
            static_cast<IOCFPlugInInterfaceStruct**>(VeltoTouchHIDServiceFactory(nullptr, kIOHIDServicePlugInTypeID));
        void* handle = nullptr;
        (*plugIn)->QueryInterface(plugIn, kIOHIDServiceInterface2ID->bytes(), &handle);
        service = static_cast<IOHIDServiceInterface2**>(handle);
    }
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;
    ~TestHost() {
        end();
        drain();
    }

    IOReturn start() { return (*plugIn)->Start(plugIn, nullptr, _device); }
    bool open() { return (*service)->open(service, 0); }

    // Starts and opens where that has not been done, listens, and schedules.
    TestHost& schedule() {
        if (!_isStarted) {
            EXPECT_EQ(start(), kIOReturnSuccess);
            EXPECT_TRUE(open());
            _isStarted = true;
        }
        (*service)->setEventCallback(service, take, this, &service);
        (*service)->scheduleWithDispatchQueue(service, queue.get());
        return *this;
    }
    TestHost& unschedule() {
        (*service)->unscheduleFromDispatchQueue(service, queue.get());
        return *this;
    }
    void stop() {
        unschedule();
        if (drainsBeforeClosing)
            drain();
        (*service)->close(service, 0);
        (*plugIn)->Stop(plugIn);
        _isStarted = false;
    }
    // Stops and lets the service go. No other call but events() comes after it.
    void end() {
        if (std::exchange(_hasEnded, true))
            return;
        stop();
        unregisterDevice(_device);
        (*service)->Release(service);
        (*plugIn)->Release(plugIn);
    }

    // Waits for the events that are queued.
    void drain() {
        dispatch_sync(queue.get(), [] {});
    }
    // All events so far, those that are queued included.
    HIDEvents events() {
        drain();
        const MutexLock guard(_lock);
        return _events;
    }

    [[nodiscard]] Ref<Value> property(const std::string& key) const {
        return Ref<Value>::adopt((*service)->copyProperty(service, makeRef<String>(key).get()));
    }
    // The property of this name, read.
    [[nodiscard]] PipelineRecording recording() const {
        const auto text = property("Recording");
        return PipelineRecording(makeRef<Data>(as<String>(text)->text()).get());
    }
    bool set(const std::string& key, const Ref<Value>& value) const {
        return (*service)->setProperty(service, makeRef<String>(key).get(), value.get());
    }

    // The handles.
    IOCFPlugInInterfaceStruct** plugIn;
    IOHIDServiceInterface2** service;

    Ref<DispatchQueue> queue = dispatch_queue_create("test host");
    std::function<void()> whenCalled = [] {}; // with every event, on the queue
    bool drainsBeforeClosing = true;

private:
    static void take(void* target, void* refcon, void* sender, IOHIDEventRef event, IOOptionBits options) {
        auto& host = *static_cast<TestHost*>(target);
        EXPECT_EQ(refcon, &host.service);
        EXPECT_EQ(sender, host.service);
        EXPECT_EQ(options, 0U);
        host.whenCalled();
        const MutexLock guard(host._lock);
        host._events.push_back(Ref<HIDEvent>::retained(event));
    }

    const io_service_t _device;
    bool _isStarted = false;
    bool _hasEnded = false;
    Mutex _lock;
    HIDEvents _events VELTO_GUARDED_BY(_lock);
};

} // namespace VeltoTouch::Tests

namespace VeltoTouch {

inline void PrintTo(const LogCapture::Line& line, std::ostream* out) {
    *out << line.category << (line.type == OS_LOG_TYPE_ERROR ? " error: " : ": ") << line.message;
}

} // namespace VeltoTouch
