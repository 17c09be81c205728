#pragma once

#include "Platform/HIDDevice.h"
#include "Tests/Kernel/UhidEnd.h"
#include "Velto/Surface/ReportDescriptor.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace VeltoTouch::Tests {

// A HID device of the kernel whose other end is in our hands (/dev/uhid): to the kernel, and to whoever opens its
// hidraw node, it is one as any other. It is a surface, unless its report descriptor says something else.
//
// What the kernel asks of it is answered on a thread of its own.
class VirtualDevice {
public:
    using Report = std::vector<std::uint8_t>;

    struct Identity {
        std::string product = "Virtual Touch Surface";
        std::string serialNumber = "K-1";
        std::string location = "guest/input0";
        std::uint16_t bus = 0x06; // BUS_VIRTUAL
        std::uint16_t vendor = 0xFE01;
        std::uint16_t model = 0x8002;
        Report reportDescriptor{Surface::kReportDescriptor.begin(), Surface::kReportDescriptor.end()};
    };

    // Plugs it in; its node is there, and reports are let through, when this returns. One at a time. Throws
    // std::runtime_error where the kernel does not take it.
    explicit VirtualDevice(const Identity& identity);
    VirtualDevice() : VirtualDevice(Identity()) {}
    VirtualDevice(const VirtualDevice&) = delete;
    VirtualDevice& operator=(const VirtualDevice&) = delete;
    ~VirtualDevice() = default;

    // /dev/hidrawN
    [[nodiscard]] const std::string& path() const noexcept { return _path; }

    // Answers requests for a report; those without an answer are refused. Any thread.
    void answer(IOHIDReportType type, std::uint8_t reportID, Report report);

    // Sends an input report. Any thread.
    void send(std::span<const std::uint8_t> report);

    // It has gone when this returns. Not while others send.
    void unplug() { _kernel.unplug(); }

    // Returns when someone has opened it for the nth time, of those times when nobody else had it open; false where
    // that takes too long.
    [[nodiscard]] bool waitUntilOpened(int times);

private:
    void handle(const uhid_event& event);
    void reply(const uhid_event& request);

    std::string _path;

    std::mutex _lock;                                                 // guards what follows
    std::map<std::pair<std::uint8_t, std::uint8_t>, Report> _answers; // by the kernel's type and ID
    int _timesOpened = 0;
    std::condition_variable _opened;

    UhidEnd _kernel; // ends first: its thread uses the rest
};

} // namespace VeltoTouch::Tests
