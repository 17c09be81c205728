#include "Tests/Kernel/VirtualSensor.h"

#include "Tests/Kernel/KernelNews.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <tuple>

#include <linux/uhid.h>
#include <poll.h>

namespace VeltoTouch::Tests {
namespace {

constexpr std::uint8_t kReportID = 1; // of both reports

// Where things are in the feature report, which is: ID, reporting state, power state, interval, sensitivity.
constexpr std::size_t kInterval = 3;
constexpr std::size_t kSensitivity = 7;
constexpr std::size_t kFeatureReportLength = 9;

// A selector is a row of usages, of which the report holds the number, from 1.
//
// clang-format off
constexpr auto kDescriptor = std::to_array<std::uint8_t>({
    0x05, 0x20,                         // usage page: sensors
    0x09, 0x01,                         // usage: a collection of sensors
    0xA1, 0x01,                         // collection (application)
    0x09, 0x73,                         //   usage: accelerometer 3D
    0xA1, 0x00,                         //   collection (physical)
    0x85, kReportID,

    0x15, 0x01, 0x25, 0x06,             //     selectors: 1 to 6, a byte
    0x75, 0x08, 0x95, 0x01,
    0x0A, 0x16, 0x03,                   //     reporting state
    0xA1, 0x02,                         //     collection (logical)
    0x0A, 0x40, 0x08, 0x0A, 0x41, 0x08, //       no events, all events,
    0x0A, 0x42, 0x08, 0x0A, 0x43, 0x08, //       threshold events, and the three that wake the host
    0x0A, 0x44, 0x08, 0x0A, 0x45, 0x08,
    0xB1, 0x00,                         //       feature (data, array, absolute)
    0xC0,
    0x0A, 0x19, 0x03,                   //     power state
    0xA1, 0x02,
    0x0A, 0x50, 0x08, 0x0A, 0x51, 0x08, //       undefined, D0 (full power)
    0x0A, 0x52, 0x08, 0x0A, 0x53, 0x08, //       to D4 (off)
    0x0A, 0x54, 0x08, 0x0A, 0x55, 0x08,
    0xB1, 0x00,
    0xC0,
    0x15, 0x00,
    0x27, 0xFF, 0xFF, 0xFF, 0x7F,
    0x75, 0x20,
    0x0A, 0x0E, 0x03, 0xB1, 0x02,       //     report interval: ms, 32 bits
    0x27, 0xFF, 0xFF, 0x00, 0x00,
    0x75, 0x10, 0x55, 0x0D,             //     sensitivity: 16 bits, 10^-3
    0x0A, 0x0F, 0x03, 0xB1, 0x02,       //     feature (data, variable, absolute)

    0x15, 0x01, 0x25, 0x05,
    0x75, 0x08, 0x55, 0x00,
    0x0A, 0x02, 0x02,                   //     event
    0xA1, 0x02,
    0x0A, 0x10, 0x08, 0x0A, 0x11, 0x08, //       unknown, state changed,
    0x0A, 0x12, 0x08, 0x0A, 0x13, 0x08, //       property changed, data updated,
    0x0A, 0x14, 0x08,                   //       poll response
    0x81, 0x00,                         //       input (data, array, absolute)
    0xC0,
    0x16, 0x01, 0x80, 0x26, 0xFF, 0x7F, //     axes: signed 16 bits, g, 10^-3
    0x75, 0x10, 0x55, 0x0D,
    0x0A, 0x53, 0x04, 0x81, 0x02,       //     x: input (data, variable, absolute)
    0x0A, 0x54, 0x04, 0x81, 0x02,       //     y
    0x0A, 0x55, 0x04, 0x81, 0x02,       //     z
    0xC0,
    0xC0,
});
// clang-format on

uhid_event creation() {
    constexpr std::string_view kName = "Virtual Sensor Hub";
    uhid_event event{};
    event.type = UHID_CREATE2;
    uhid_create2_req& request = event.u.create2;
    std::ranges::copy(kName, request.name);
    request.bus = 0x06; // BUS_VIRTUAL
    request.vendor = 0xFE01;
    request.product = 0x8003;
    request.rd_size = kDescriptor.size();
    std::ranges::copy(kDescriptor, request.rd_data);
    return event;
}

} // namespace

VirtualSensor::VirtualSensor(const Axes& axes) : _axes(axes), _features({kReportID, 1, 1, 100, 0, 0, 0, 1, 0}) {
    KernelNews news;
    _kernel.write(creation());
    _kernel.serve([this](const uhid_event& event) { handle(event); }); // the driver asks while it is being bound
    std::ignore = news.waitFor("add", "iio:device");
}

void VirtualSensor::moveTo(const Axes& axes) {
    const std::lock_guard guard(_lock);
    _axes = axes;
}

void VirtualSensor::answerAfter(std::chrono::milliseconds delay) {
    const std::lock_guard guard(_lock);
    _delay = delay;
}

void VirtualSensor::fallSilent() {
    const std::lock_guard guard(_lock);
    _axes.reset();
}

std::uint32_t VirtualSensor::intervalMs() {
    const std::lock_guard guard(_lock);
    std::uint32_t interval = 0;
    for (std::size_t i = 0; i < 4; ++i)
        interval |= static_cast<std::uint32_t>(_features[kInterval + i]) << (8 * i);
    return interval;
}

std::optional<std::uint16_t> VirtualSensor::sensitivity() {
    const std::lock_guard guard(_lock);
    if (!_wasToldFeatures)
        return std::nullopt;
    return static_cast<std::uint16_t>(_features[kSensitivity] | _features[kSensitivity + 1] << 8);
}

void VirtualSensor::handle(const uhid_event& event) {
    if (event.type == UHID_GET_REPORT)
        replyToGet(event);
    else if (event.type == UHID_SET_REPORT)
        replyToSet(event);
}

VirtualSensor::Report VirtualSensor::inputReport() {
    constexpr std::uint8_t kPollResponse = 5;
    Report report{kReportID, kPollResponse};
    for (const std::int16_t value : *_axes) {
        report.push_back(static_cast<std::uint8_t>(value & 0xFF));
        report.push_back(static_cast<std::uint8_t>(value >> 8 & 0xFF));
    }
    return report;
}

// Unless there is no more to serve.
void VirtualSensor::takeTime() {
    std::unique_lock guard(_lock);
    const auto delay = static_cast<int>(_delay.count());
    guard.unlock();
    pollfd stop{.fd = _kernel.ending(), .events = POLLIN, .revents = 0};
    ::poll(&stop, 1, delay);
}

void VirtualSensor::replyToGet(const uhid_event& request) {
    uhid_event event{};
    event.type = UHID_GET_REPORT_REPLY;
    uhid_get_report_reply_req& answer = event.u.get_report_reply;
    answer.id = request.u.get_report.id;
    const bool isFeature = request.u.get_report.rtype == UHID_FEATURE_REPORT;
    if (!isFeature)
        takeTime();
    {
        const std::lock_guard guard(_lock);
        if (isFeature || _axes) {
            const Report report = isFeature ? _features : inputReport();
            answer.size = static_cast<std::uint16_t>(report.size());
            std::ranges::copy(report, answer.data);
        } else {
            answer.err = EIO;
        }
    }
    _kernel.reply(event);
}

void VirtualSensor::replyToSet(const uhid_event& request) {
    const uhid_set_report_req& wanted = request.u.set_report;
    uhid_event event{};
    event.type = UHID_SET_REPORT_REPLY;
    event.u.set_report_reply.id = wanted.id;
    if (wanted.rtype == UHID_FEATURE_REPORT && wanted.size == kFeatureReportLength) {
        const std::lock_guard guard(_lock);
        _features.assign(wanted.data, wanted.data + wanted.size);
        _wasToldFeatures = true;
    } else {
        event.u.set_report_reply.err = EIO;
    }
    _kernel.reply(event);
}

} // namespace VeltoTouch::Tests
