#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/HIDDevice.h"
#include "Tests/Kernel/KernelNews.h"
#include "Velto/Surface/ReportDescriptor.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <linux/uhid.h>
#include <poll.h>
#include <unistd.h>

namespace VeltoTouch::Tests {

// A HID device of the kernel whose other end is in our hands (/dev/uhid): to the kernel, and to whoever opens its
// hidraw node, it is one as any other. It is a surface, unless its report descriptor says something else.
//
// Requests of the kernel are answered on a thread of its own. Throws std::system_error where the kernel refuses.
class VirtualDevice {
public:
    using Report = std::vector<std::uint8_t>;
    using Answers = std::map<std::pair<IOHIDReportType, std::uint8_t>, Report>; // by type and ID

    struct Identity {
        std::string product = "Virtual Touch Surface";
        std::string serialNumber = "K-1";
        std::string location = "guest/input0";
        std::uint16_t bus = 0x06; // BUS_VIRTUAL
        std::uint16_t model = 0x8002;
        Report reportDescriptor{Surface::kReportDescriptor.begin(), Surface::kReportDescriptor.end()};
        Answers answers{};           // from the start
        std::string node = "hidraw"; // what its node's name begins with
    };

    // Plugs it in; its node is there, and reports are let through, when this returns. One at a time.
    explicit VirtualDevice(const Identity& identity) : _answers(identity.answers) {
        KernelNews news;
        write(creationOf(identity));
        _server = std::jthread([this](const std::stop_token& stop) { serve(stop); });
        _path = news.waitForNode(identity.node);
        news.waitFor("bind", "SUBSYSTEM", "hid"); // until then the kernel drops reports
    }
    VirtualDevice() : VirtualDevice(Identity()) {}
    VirtualDevice(const VirtualDevice&) = delete;
    VirtualDevice& operator=(const VirtualDevice&) = delete;
    ~VirtualDevice() { unplug(); }

    // Of its node, /dev/hidrawN.
    [[nodiscard]] const std::string& path() const noexcept { return _path; }

    // Answers requests for a report; those without an answer are refused. Any thread.
    void answer(IOHIDReportType type, std::uint8_t reportID, Report report) {
        const std::lock_guard guard(_lock);
        _answers[{type, reportID}] = std::move(report);
    }
    void refuse(IOHIDReportType type, std::uint8_t reportID) {
        const std::lock_guard guard(_lock);
        _answers.erase({type, reportID});
    }
    // The answer by now: the host may set a report that it could get.
    [[nodiscard]] Report answerOf(IOHIDReportType type, std::uint8_t reportID) {
        const std::lock_guard guard(_lock);
        return _answers.at({type, reportID});
    }
    std::atomic<std::chrono::milliseconds> inputDelay{}; // of answers to requests for input reports

    // Sends an input report. Any thread.
    void send(std::span<const std::uint8_t> report) {
        uhid_event event{};
        event.type = UHID_INPUT2;
        event.u.input2.size = static_cast<std::uint16_t>(report.size());
        std::ranges::copy(report, event.u.input2.data);
        write(event);
    }

    // It has gone when this returns. Not while others send.
    void unplug() {
        if (!std::exchange(_isPlugged, false))
            return;
        uhid_event event{};
        event.type = UHID_DESTROY;
        write(event);
    }

    // Waits until someone has opened it for the nth time, of those times when nobody else had it open; false where that
    // takes too long.
    [[nodiscard]] bool waitUntilOpened(int times) {
        std::unique_lock guard(_lock);
        return _opened.wait_for(guard, std::chrono::seconds(20), [&] { return _timesOpened >= times; });
    }

private:
    // Into a field of fixed size that has been zeroed.
    template <std::size_t N>
    static void copyText(std::uint8_t (&field)[N], const std::string& text) {
        std::copy_n(text.begin(), std::min(text.size(), N - 1), field);
    }
    static uhid_event creationOf(const Identity& identity) {
        uhid_event event{};
        event.type = UHID_CREATE2;
        uhid_create2_req& request = event.u.create2;
        copyText(request.name, identity.product);
        copyText(request.phys, identity.location);
        copyText(request.uniq, identity.serialNumber);
        request.bus = identity.bus;
        request.vendor = 0xFE01;
        request.product = identity.model;
        request.rd_size = static_cast<std::uint16_t>(identity.reportDescriptor.size());
        std::ranges::copy(identity.reportDescriptor, request.rd_data);
        return event;
    }
    void write(const uhid_event& event) const {
        if (::write(_kernel.get(), &event, sizeof event) < 0)
            throw std::system_error(errno, std::generic_category(), "/dev/uhid");
    }

    void serve(const std::stop_token& stop) {
        pollfd ready{.fd = _kernel.get(), .events = POLLIN, .revents = 0};
        while (!stop.stop_requested()) {
            uhid_event event{};
            if (::poll(&ready, 1, 20) == 1 && ::read(_kernel.get(), &event, sizeof event) > 0)
                handle(event);
        }
    }
    void handle(const uhid_event& event) {
        if (event.type == UHID_GET_REPORT && event.u.get_report.rtype == UHID_INPUT_REPORT)
            std::this_thread::sleep_for(inputDelay.load());
        const std::lock_guard guard(_lock);
        if (event.type == UHID_GET_REPORT)
            reply(event.u.get_report);
        else if (event.type == UHID_SET_REPORT)
            reply(event.u.set_report);
        else if (event.type == UHID_OPEN)
            ++_timesOpened;
        _opened.notify_all();
    }
    // Nobody may want a reply any more.
    void reply(const uhid_get_report_req& request) {
        uhid_event event{};
        event.type = UHID_GET_REPORT_REPLY;
        uhid_get_report_reply_req& reply = event.u.get_report_reply;
        reply.id = request.id;
        if (const auto known = find(request.rtype, request.rnum); known != _answers.end()) {
            reply.size = static_cast<std::uint16_t>(known->second.size());
            std::ranges::copy(known->second, reply.data);
        } else {
            reply.err = EIO;
        }
        (void)!::write(_kernel.get(), &event, sizeof event);
    }
    void reply(const uhid_set_report_req& request) {
        uhid_event event{};
        event.type = UHID_SET_REPORT_REPLY;
        event.u.set_report_reply.id = request.id;
        if (const auto known = find(request.rtype, request.rnum);
            known != _answers.end() && known->second.size() == request.size)
            known->second.assign(request.data, request.data + request.size);
        else
            event.u.set_report_reply.err = EIO;
        (void)!::write(_kernel.get(), &event, sizeof event);
    }
    Answers::iterator find(std::uint8_t kernelType, std::uint8_t reportID) {
        return _answers.find(
            {kernelType == UHID_FEATURE_REPORT ? kIOHIDReportTypeFeature : kIOHIDReportTypeInput, reportID});
    }

    const FileDescriptor _kernel{::open("/dev/uhid", O_RDWR | O_CLOEXEC)};
    std::string _path;
    bool _isPlugged = true;

    std::mutex _lock; // guards what follows
    Answers _answers;
    int _timesOpened = 0;
    std::condition_variable _opened;

    std::jthread _server; // ends first: it uses the rest
};

} // namespace VeltoTouch::Tests
