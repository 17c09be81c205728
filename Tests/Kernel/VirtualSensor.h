#pragma once

#include "Tests/Kernel/UhidEnd.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace VeltoTouch::Tests {

// An accelerometer on a HID sensor hub whose other end is in our hands (/dev/uhid). To the kernel, and to whoever reads
// it, it is one as any other.
class VirtualSensor {
public:
    using Axes = std::array<std::int16_t, 3>; // in thousandths of the standard gravity

    // Plugs it in; it can be read when this returns. Throws std::system_error where the kernel does not take it.
    explicit VirtualSensor(const Axes& axes);
    VirtualSensor(const VirtualSensor&) = delete;
    VirtualSensor& operator=(const VirtualSensor&) = delete;
    ~VirtualSensor() = default;

    // What is read from now on. Any thread.
    void moveTo(const Axes& axes);
    // Values are told so long after they are asked for from now on. Any thread.
    void answerAfter(std::chrono::milliseconds delay);
    // Values are refused from now on. Any thread.
    void fallSilent();

    // The time between two samples that it was told last, in milliseconds.
    [[nodiscard]] std::uint32_t intervalMs();
    // The smallest change that it was told to tell of; nothing before it was told.
    [[nodiscard]] std::optional<std::uint16_t> sensitivity();

    // It has gone when this returns.
    void unplug() { _kernel.unplug(); }

private:
    using Report = std::vector<std::uint8_t>;

    void handle(const uhid_event& event);
    void replyToGet(const uhid_event& request);
    void replyToSet(const uhid_event& request);
    [[nodiscard]] Report inputReport();
    void takeTime();

    std::mutex _lock;          // guards what follows
    std::optional<Axes> _axes; // none: refused
    Report _features;          // the feature report
    bool _wasToldFeatures = false;
    std::chrono::milliseconds _delay{0};

    UhidEnd _kernel; // ends first: its thread uses the rest
};

} // namespace VeltoTouch::Tests
