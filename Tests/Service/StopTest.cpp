#include "Platform/Backend/HIDEventService.h"
#include "Tests/Support/Eventually.h"
#include "Tests/Support/TestAccelerometer.h"
#include "Tests/Support/TestHost.h"

#include <tuple>

#include <dlfcn.h>

#include <gmock/gmock.h>

namespace VeltoTouch {
namespace Tests {
namespace {

using testing::ElementsAre;
using testing::Pair;

// What the service asks of the platform from its scheduling on.
struct Asked {
    std::function<void(const char* call)> whenStopping = [](const char*) {}; // just before the call takes effect
    IOHIDReportWithTimeStampCallback reportCallback = nullptr;               // registered last, until it is withdrawn
    void* context = nullptr;
    Ref<DispatchSemaphore> firstSemaphore; // the one that scheduling waits for
};
Asked* asked = nullptr; // the test's, while it runs

void noteStopping(const char* call) {
    if (asked != nullptr)
        asked->whenStopping(call);
}

// The library's definition of a function that the program defines as well.
template <class Function>
Function* platformsOwn(Function* function) {
    Dl_info own{};
    dladdr(reinterpret_cast<void*>(function), &own);
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, own.dli_sname));
}

} // namespace
} // namespace Tests

// The service's calls come to these definitions first, which note them and pass them on.

void IOHIDDeviceRegisterInputReportWithTimeStampCallback(IOHIDDeviceRef device, std::uint8_t* report, CFIndex length,
                                                         IOHIDReportWithTimeStampCallback callback, void* context) {
    if (callback == nullptr && context == nullptr)
        Tests::noteStopping("withdraw the report callback");
    else if (Tests::asked != nullptr)
        std::tie(Tests::asked->reportCallback, Tests::asked->context) = std::tie(callback, context);
    Tests::platformsOwn(IOHIDDeviceRegisterInputReportWithTimeStampCallback)(device, report, length, callback, context);
}

void IOHIDDeviceUnscheduleFromRunLoop(IOHIDDeviceRef device, CFRunLoopRef loop, CFStringRef mode) {
    Tests::noteStopping("unschedule the device");
    Tests::platformsOwn(IOHIDDeviceUnscheduleFromRunLoop)(device, loop, mode);
}

void IOHIDEventSystemClientUnscheduleWithRunLoop(IOHIDEventSystemClientRef client, CFRunLoopRef loop,
                                                 CFStringRef mode) {
    Tests::noteStopping("unschedule the accelerometer");
    Tests::platformsOwn(IOHIDEventSystemClientUnscheduleWithRunLoop)(client, loop, mode);
}

Ref<DispatchSemaphore> dispatch_semaphore_create(unsigned count) {
    auto semaphore = Tests::platformsOwn(dispatch_semaphore_create)(count);
    if (Tests::asked != nullptr && !Tests::asked->firstSemaphore)
        Tests::asked->firstSemaphore = semaphore;
    return semaphore;
}

namespace Tests {
namespace {

// Gives the service an image behind a gap, an empty report and a firmware reset, which all handlers together hear, and
// returns how many lines they log of them.
std::ptrdiff_t linesOfHandlers(const LogCapture& log, std::uint32_t frame) {
    const auto count = [&log] {
        const std::vector<LogCapture::Line> lines = log.lines();
        return std::ranges::count_if(lines, [](const LogCapture::Line& line) {
            const auto has = [&line](const char* words) { return line.message.find(words) != line.message.npos; };
            return has("probe") || has("Received image") || has("Disjoint") || has("Invalid");
        });
    };
    const std::ptrdiff_t before = count();
    for (Report report : {imageReport(makeImage(frame, 0, {})), Report{}, firmwareEventReport(0)})
        asked->reportCallback(asked->context, kIOReturnSuccess, nullptr, kIOHIDReportTypeInput, 0, report.data(),
                              static_cast<CFIndex>(report.size()), 0);
    return count() - before;
}

TEST(StopTest, DeviceThenHandlersThenAccelerometerStop) {
    const auto device = makeRef<TestDevice>();
    const auto accelerometer = makeRef<TestAccelerometer>();
    registerEventService(accelerometer);
    TestHost host(device);
    Asked noted;
    asked = &noted;
    host.schedule();
    device->deliverAndWait(imageReport(makeImage(1, 0, {})));

    const LogCapture log(OS_LOG_TYPE_DEBUG);
    std::vector<std::pair<std::string, std::ptrdiff_t>> steps;
    std::uint32_t frame = 1;
    noted.whenStopping = [&](const char* call) { steps.emplace_back(call, linesOfHandlers(log, frame += 2)); };
    host.unschedule();
    constexpr std::ptrdiff_t kAllHandlers = 3 + 2 + 3; // the image's, the empty report's, the reset's
    EXPECT_THAT(steps, ElementsAre(Pair("unschedule the device", kAllHandlers),
                                   Pair("withdraw the report callback", kAllHandlers),
                                   Pair("unschedule the accelerometer", 0)));
    EXPECT_EQ(linesOfHandlers(log, frame + 2), 0);
    EXPECT_TRUE(
        eventually([&] { return CFGetRetainCount(noted.firstSemaphore.get()) == 1; })); // the thread's goes last
    asked = nullptr;
    unregisterEventService(accelerometer);
}

} // namespace
} // namespace Tests
} // namespace VeltoTouch
