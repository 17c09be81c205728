#pragma once

#include "Platform/Backend/HIDEventService.h"
#include "Platform/Linux/RunLoop.h"

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

struct iio_channel;
struct iio_context;
struct iio_device;

namespace VeltoTouch {

// A three-axis accelerometer of the Linux kernel (Industrial I/O). The axes are the chip's: how it is mounted is not
// looked at.
//
// It is read value by value: the kernel's buffers need a trigger and a right to the device's node, which not every
// accelerometer and not every user has, and a buffer has one reader. The price is that a read takes as long as the
// hardware takes for three values, the first one also the time to wake it up. So each source has a thread that reads
// for it, and the run loop waits for none (Platform/Linux/EventReader.h).
class IIOAccelerometer final : public HIDEventService {
public:
    // An accelerometer that can be read right now; null for other devices, and for one that is busy. The device is the
    // context's, which is shared by all that are found in it.
    [[nodiscard]] static Ref<IIOAccelerometer> make(std::shared_ptr<iio_context> context, iio_device* device);

    // "PrimaryUsagePage" 0xFF00, "PrimaryUsage" 3, "ReportInterval", and "Product" where the driver gives a name.
    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override;
    // "ReportInterval" alone, as `reportIntervalUs` reads it. In force from the next event on; before that is read, the
    // hardware is set to the nearest sampling frequency it has. One that takes none goes on with its own.
    bool setProperty(const std::string& key, const Ref<Value>& value) override;
    // Events that could not be read or taken in time are left out. A read that fails ends the events: the device has
    // gone, somebody else has it, or it does not answer (which the kernel finds out in five seconds).
    [[nodiscard]] RunLoopSource startEvents(RunLoop& loop, std::string_view mode, EventHandler handler) override;

private:
    struct Axis {
        iio_channel* channel;
        double offset; // to the raw value
        double scale;  // of the sum, to m/s^2
    };
    using Axes = std::array<Axis, 3>;

    IIOAccelerometer(std::shared_ptr<iio_context> context, iio_device* device, const Axes& axes) noexcept;

    [[nodiscard]] static std::optional<Axis> axisOf(iio_device* device, const char* name);
    // Along an axis in g; nothing where it cannot be read, or does not answer.
    [[nodiscard]] static std::optional<double> read(const Axis& axis) noexcept;
    [[nodiscard]] Ref<HIDEvent> readEvent() const;
    void applyInterval() noexcept; // on a reader's thread, as the hardware may take its time
    void setSamplingFrequency(double hz) const;
    [[nodiscard]] std::uint64_t intervalTicks() const noexcept;

    const std::shared_ptr<iio_context> _context; // owns what follows
    iio_device* const _device;
    const Axes _axes;
    std::atomic<double> _intervalUs{100'000};
    std::atomic<double> _appliedIntervalUs{0}; // that the hardware was told
};

// The accelerometers of this machine, in the kernel's order; none where there are none, or they cannot be used.
[[nodiscard]] std::vector<Ref<HIDEventService>> findAccelerometers();

} // namespace VeltoTouch
