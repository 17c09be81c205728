#include "Tests/Kernel/VirtualDevice.h"

#include "Tests/Kernel/KernelNews.h"

#include <algorithm>
#include <cerrno>
#include <chrono>

#include <linux/uhid.h>

namespace VeltoTouch::Tests {
namespace {

constexpr std::chrono::seconds kPatience{20};

// Into a field of fixed size that has been zeroed.
template <std::size_t N>
void copyText(std::uint8_t (&field)[N], const std::string& text) {
    std::copy_n(text.begin(), std::min(text.size(), N - 1), field);
}

uhid_event creationOf(const VirtualDevice::Identity& identity) {
    uhid_event event{};
    event.type = UHID_CREATE2;
    uhid_create2_req& request = event.u.create2;
    copyText(request.name, identity.product);
    copyText(request.phys, identity.location);
    copyText(request.uniq, identity.serialNumber);
    request.bus = identity.bus;
    request.vendor = identity.vendor;
    request.product = identity.model;
    request.rd_size = static_cast<std::uint16_t>(identity.reportDescriptor.size());
    std::ranges::copy(identity.reportDescriptor, request.rd_data);
    return event;
}

} // namespace

VirtualDevice::VirtualDevice(const Identity& identity) {
    KernelNews news;
    _kernel.write(creationOf(identity));
    _path = news.waitFor("add", "hidraw");
    news.waitForSubsystem("bind", "hid"); // until then the kernel drops reports
    _kernel.serve([this](const uhid_event& event) { handle(event); });
}

void VirtualDevice::answer(IOHIDReportType type, std::uint8_t reportID, Report report) {
    const std::uint8_t kernelType = type == kIOHIDReportTypeFeature ? UHID_FEATURE_REPORT : UHID_INPUT_REPORT;
    const std::lock_guard guard(_lock);
    _answers[{kernelType, reportID}] = std::move(report);
}

void VirtualDevice::send(std::span<const std::uint8_t> report) {
    uhid_event event{};
    event.type = UHID_INPUT2;
    event.u.input2.size = static_cast<std::uint16_t>(report.size());
    std::ranges::copy(report, event.u.input2.data);
    _kernel.write(event);
}

bool VirtualDevice::waitUntilOpened(int times) {
    std::unique_lock guard(_lock);
    return _opened.wait_for(guard, kPatience, [&] { return _timesOpened >= times; });
}

void VirtualDevice::handle(const uhid_event& event) {
    if (event.type == UHID_GET_REPORT)
        reply(event);
    if (event.type != UHID_OPEN)
        return;
    const std::lock_guard guard(_lock);
    ++_timesOpened;
    _opened.notify_all();
}

void VirtualDevice::reply(const uhid_event& request) {
    uhid_event event{};
    event.type = UHID_GET_REPORT_REPLY;
    uhid_get_report_reply_req& answer = event.u.get_report_reply;
    answer.id = request.u.get_report.id;
    answer.err = EIO;
    {
        const std::lock_guard guard(_lock);
        if (const auto known = _answers.find({request.u.get_report.rtype, request.u.get_report.rnum});
            known != _answers.end()) {
            answer.err = 0;
            answer.size = static_cast<std::uint16_t>(known->second.size());
            std::ranges::copy(known->second, answer.data);
        }
    }
    _kernel.reply(event);
}

} // namespace VeltoTouch::Tests
