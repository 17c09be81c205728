#include "Velto/Host/HostedService.h"

#include "Platform/Testing/TraceCapture.h"

#include <functional>

#include <gmock/gmock.h>
#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

// A plug-in that keeps the calls that it gets and fails where it is told to.
struct FakePlugIn {
    static inline std::vector<std::string> calls;
    static inline std::string failing;

    static bool succeeds(const char* call) {
        calls.emplace_back(call);
        return failing != call;
    }
    static IOReturn status(const char* call) { return succeeds(call) ? kIOReturnSuccess : kIOReturnNoResources; }
    static ULONG release(void* self) { return succeeds(self == &plugIn ? "Release plug-in" : "Release service"), 1; }
    static HRESULT query(void*, REFIID, void** handle) {
        if (!succeeds("QueryInterface"))
            return E_NOINTERFACE;
        *handle = &service;
        return S_OK;
    }
    static void setEventCallback(void*, IOHIDServiceEventCallback callback, void* target, void* refcon) {
        calls.emplace_back("setEventCallback");
        deliver = [=](IOHIDEventRef event) { callback(target, refcon, &service, event, 0); };
    }
    // The last event is still under way when this returns.
    static void unschedule(void*, dispatch_queue_t queue) {
        calls.emplace_back("unscheduleFromDispatchQueue");
        dispatch_async(queue, [] {
            usleep(20'000);
            for (const std::uint32_t usage : {1U, 2U}) // the second is a firmware reset
                deliver(IOHIDEventCreateVendorDefinedEvent(nullptr, 7, 0xFF60, usage, 0, {}, 0).get());
        });
    }
    static void* factory(CFTypeRef, CFUUIDRef) { return succeeds("factory") ? &plugIn : nullptr; }

    static inline std::function<void(IOHIDEventRef)> deliver;
    static inline IOCFPlugInInterfaceStruct plugInTable{
        ._reserved = nullptr,
        .QueryInterface = query,
        .AddRef = nullptr,
        .Release = release,
        .version = 1,
        .revision = 0,
        .Probe = [](void*, CFDictionaryRef, io_service_t, std::int32_t*) { return status("Probe"); },
        .Start = [](void*, CFDictionaryRef, io_service_t) { return status("Start"); },
        .Stop = [](void*) { return status("Stop"); }};
    static inline IOHIDServiceInterface2 serviceTable{
        ._reserved = nullptr,
        .QueryInterface = query,
        .AddRef = nullptr,
        .Release = release,
        .open = [](void*, IOOptionBits) { return succeeds("open"); },
        .close = [](void*, IOOptionBits) { calls.emplace_back("close"); },
        .copyProperty = [](void*, CFStringRef) -> CFPropertyListRef { return nullptr; },
        .setProperty = [](void*, CFStringRef, CFPropertyListRef) { return false; },
        .setEventCallback = setEventCallback,
        .scheduleWithDispatchQueue = [](void*, dispatch_queue_t) { calls.emplace_back("scheduleWithDispatchQueue"); },
        .unscheduleFromDispatchQueue = unschedule,
        .copyEvent = nullptr,
        .setOutputEvent = nullptr};
    static inline IOCFPlugInInterfaceStruct* plugIn = &plugInTable;
    static inline IOHIDServiceInterface2* service = &serviceTable;
};

TEST(HostedServiceTest, EndsByTheWholeSequenceOrByWhatHadBegun) {
    const auto properties = makeRef<Dictionary>(std::vector<Dictionary::Entry>());
    struct Row {
        std::string failing;
        std::vector<std::string> calls;
    };
    for (const auto& [failing, calls] : {
             Row{"factory", {"factory"}},
             Row{"QueryInterface", {"factory", "QueryInterface", "Release plug-in"}},
             Row{"Probe", {"factory", "QueryInterface", "Probe", "Release service", "Release plug-in"}},
             Row{"Start", {"factory", "QueryInterface", "Probe", "Start", "Release service", "Release plug-in"}},
             Row{"open",
                 {"factory", "QueryInterface", "Probe", "Start", "open", "Stop", "Release service", "Release plug-in"}},
             Row{"",
                 {"factory", "QueryInterface", "Probe", "Start", "open", "setEventCallback",
                  "scheduleWithDispatchQueue", "unscheduleFromDispatchQueue", "firmwareReset", "close", "Stop",
                  "Release service", "Release plug-in"}},
         }) {
        FakePlugIn::calls.clear();
        FakePlugIn::failing = failing;
        const auto live = [&] {
            HostedService service(FakePlugIn::factory, 1, properties.get(),
                                  [](const Gesture& gesture) { FakePlugIn::calls.emplace_back(nameOf(gesture.kind)); });
            service.schedule();
        };
        const TraceCapture trace;
        if (failing.empty())
            live();
        else
            EXPECT_THROW(live(), std::runtime_error) << failing;
        EXPECT_EQ(FakePlugIn::calls, calls) << failing;
        const auto traced = failing.empty() ? std::vector{TracePoint{0x2B1501C0, 6, 0, 0, hostTimeOf(7).count()}}
                                            : std::vector<TracePoint>();
        EXPECT_EQ(trace.points(), traced);
    }
}

} // namespace
} // namespace VeltoTouch::Tests
