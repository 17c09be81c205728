#include "Tests/Support/Reports.h"
#include "Tests/Support/TestDevice.h"

// What the plain host has from its system: a device, which sends a firmware reset when it is asked to, and a way to
// drain a queue.

namespace VeltoTouch::Tests {
namespace {

TestDevice& device() {
    static auto* const theDevice = makeRef<TestDevice>().leak();
    return *theDevice;
}

} // namespace

extern "C" std::uint32_t registerTestDevice() { return registerDevice(Ref<TestDevice>::retained(&device())); }

extern "C" void sendFirmwareReset() {
    device().deliverAndWait(firmwareEventReport(InputReport::FirmwareEvent::kReset));
}

extern "C" void drainQueue(void* queue) {
    dispatch_sync(static_cast<dispatch_queue_t>(queue), [] {});
}

} // namespace VeltoTouch::Tests
