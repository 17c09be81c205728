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

// A three-axis accelerometer of the Linux kernel (Industrial I/O). The axes are the chip's; its mounting matrix is
// ignored.
//
// Values are read one by one, not from the kernel's buffer: a buffer needs a trigger and a right to the device's node,
// which not every accelerometer and user has, and it has one reader. A read therefore takes as long as the hardware
// takes for three values, the first also the time to wake it up, so each source reads on a thread of its own
// (EventReader.h).
class IIOAccelerometer final : public HIDEventService {
public:
    // Returns an accelerometer that can be read now; null for other devices and for a busy one. The device belongs to
    // the context, which all accelerometers found in it share.
    [[nodiscard]] static Ref<IIOAccelerometer> make(std::shared_ptr<iio_context> context, iio_device* device);

    // "PrimaryUsagePage" 0xFF00, "PrimaryUsage" 3, "ReportInterval", and "Product" if the driver gives a name.
    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override;
    // Takes "ReportInterval" alone, as `reportIntervalUs` reads it. In force from the next event on; before that is
    // read, the hardware is set to the nearest sampling frequency it offers. Hardware that takes none keeps its own.
    bool setProperty(const std::string& key, const Ref<Value>& value) override;
    // Events that are not read or taken in time are left out. A read that fails ends the events: the device is removed,
    // another reader holds it, or it does not answer (the kernel gives up after five seconds).
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
    // Returns the acceleration along an axis in g, or nothing if it cannot be read.
    [[nodiscard]] static std::optional<double> read(const Axis& axis) noexcept;
    [[nodiscard]] Ref<HIDEvent> readEvent() const;
    void applyInterval() noexcept; // on a reader's thread, as the hardware may take its time
    void setSamplingFrequency(double hz) const;
    [[nodiscard]] std::uint64_t intervalTicks() const noexcept;

    const std::shared_ptr<iio_context> _context; // owns what follows
    iio_device* const _device;
    const Axes _axes;
    std::atomic<double> _intervalUs{100'000};
    std::atomic<double> _appliedIntervalUs{0}; // as last set in the hardware
};

// Returns the usable accelerometers of this machine, in the kernel's order.
[[nodiscard]] std::vector<Ref<HIDEventService>> findAccelerometers();

} // namespace VeltoTouch
