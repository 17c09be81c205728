#pragma once

#include "Tests/Kernel/VirtualDevice.h"

#include <array>
#include <cstdint>

namespace VeltoTouch::Tests {

inline constexpr std::uint8_t kSensorReport = 1; // the ID of both reports

// A selector is a row of usages, of which the report holds the number, from 1.
//
// clang-format off
inline const VirtualDevice::Report kSensorDescriptor{
    0x05, 0x20,                         // usage page: sensors
    0x09, 0x01,                         // usage: a collection of sensors
    0xA1, 0x01,                         // collection (application)
    0x09, 0x73,                         //   usage: accelerometer 3D
    0xA1, 0x00,                         //   collection (physical)
    0x85, kSensorReport,

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
};
// clang-format on

// The feature report: ID, reporting state, power state, interval, sensitivity.
inline const VirtualDevice::Report kSensorFeatures{kSensorReport, 1, 1, 100, 0, 0, 0, 1, 0};

// An accelerometer on a HID sensor hub (/dev/uhid). To the kernel, and to whoever reads it, it is one as any other.
class VirtualSensor {
public:
    using Axes = std::array<std::int16_t, 3>; // in thousandths of the standard gravity

    // Plugs it in; it can be read when this returns.
    explicit VirtualSensor(const Axes& axes)
        : _hub({.product = "Virtual Sensor Hub",
                .model = 0x8003,
                .reportDescriptor = kSensorDescriptor,
                .answers = {{{kIOHIDReportTypeFeature, kSensorReport}, kSensorFeatures},
                            {{kIOHIDReportTypeInput, kSensorReport}, inputReport(axes)}},
                .node = "iio:device"}) {}

    // Sets what is read from now on. Any thread.
    void moveTo(const Axes& axes) { _hub.answer(kIOHIDReportTypeInput, kSensorReport, inputReport(axes)); }
    // Values come so long after they are asked for from now on. Any thread.
    void answerAfter(std::chrono::milliseconds delay) { _hub.inputDelay = delay; }
    // Values are refused from now on. Any thread.
    void fallSilent() { _hub.refuse(kIOHIDReportTypeInput, kSensorReport); }

    // The time between two samples, in milliseconds, and the smallest change to report, as the host has set them.
    [[nodiscard]] std::uint32_t intervalMs() { return feature(3); }
    [[nodiscard]] std::uint32_t sensitivity() { return feature(7); }

    // It has gone when this returns.
    void unplug() { _hub.unplug(); }

private:
    static VirtualDevice::Report inputReport(const Axes& axes) {
        constexpr std::uint8_t kPollResponse = 5;
        VirtualDevice::Report report{kSensorReport, kPollResponse};
        for (const std::int16_t value : axes) {
            report.push_back(static_cast<std::uint8_t>(value & 0xFF));
            report.push_back(static_cast<std::uint8_t>(value >> 8 & 0xFF));
        }
        return report;
    }
    // Two bytes of the feature report.
    std::uint32_t feature(std::size_t at) {
        const auto features = _hub.answerOf(kIOHIDReportTypeFeature, kSensorReport);
        return features.at(at) + 256U * features.at(at + 1);
    }

    VirtualDevice _hub;
};

} // namespace VeltoTouch::Tests
