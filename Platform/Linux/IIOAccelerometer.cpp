#include "Platform/Linux/IIOAccelerometer.h"

#include "Platform/Clock.h"
#include "Platform/Linux/EventReader.h"
#include "Platform/Linux/IIOSamplingFrequency.h"

#include <ratio>
#include <utility>

#include <iio.h>

namespace VeltoTouch {
namespace {

constexpr double kStandardGravity = 9.80665; // m/s^2

// For a HID sensor that does not answer the kernel waits five seconds and then returns 0 as a value.
constexpr double kLongestReadUs = 4'500'000;

std::uint64_t ticksOf(double microseconds) noexcept {
    mach_timebase_info_data_t timebase{};
    mach_timebase_info(&timebase);
    return static_cast<std::uint64_t>(microseconds * 1000.0 * timebase.denom / timebase.numer);
}

// Reads an attribute as the kernel's text through one of the library's two functions; empty if there is none.
template <class Object>
std::string textOf(ssize_t (*read)(const Object*, const char*, char*, std::size_t), const Object* object,
                   const char* name) {
    std::array<char, 4096> text{}; // the kernel gives a page at most
    const ssize_t length = read(object, name, text.data(), text.size() - 1);
    return length < 0 ? "" : text.data();
}

} // namespace

IIOAccelerometer::IIOAccelerometer(std::shared_ptr<iio_context> context, iio_device* device, const Axes& axes) noexcept
    : _context(std::move(context)), _device(device), _axes(axes) {}

Ref<IIOAccelerometer> IIOAccelerometer::make(std::shared_ptr<iio_context> context, iio_device* device) {
    constexpr std::array kNames{"accel_x", "accel_y", "accel_z"};
    Axes axes{};
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const auto axis = axisOf(device, kNames[i]);
        if (!axis || !read(*axis))
            return nullptr;
        axes[i] = *axis;
    }
    return Ref<IIOAccelerometer>::adopt(new IIOAccelerometer(std::move(context), device, axes));
}

std::optional<IIOAccelerometer::Axis> IIOAccelerometer::axisOf(iio_device* device, const char* name) {
    Axis axis{.channel = iio_device_find_channel(device, name, false), .offset = 0, .scale = 0};
    if (axis.channel == nullptr || iio_channel_attr_read_double(axis.channel, "scale", &axis.scale) < 0)
        return std::nullopt;
    if (iio_channel_attr_read_double(axis.channel, "offset", &axis.offset) < 0)
        axis.offset = 0; // the attribute is absent if there is no offset
    return axis;
}

std::optional<double> IIOAccelerometer::read(const Axis& axis) noexcept {
    double raw = 0;
    const std::uint64_t startTime = mach_absolute_time();
    if (iio_channel_attr_read_double(axis.channel, "raw", &raw) < 0)
        return std::nullopt;
    if (mach_absolute_time() - startTime > ticksOf(kLongestReadUs))
        return std::nullopt;
    return (raw + axis.offset) * axis.scale / kStandardGravity;
}

Ref<HIDEvent> IIOAccelerometer::readEvent() const {
    std::array<double, 3> values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto value = read(_axes[i]);
        if (!value)
            return nullptr;
        values[i] = *value;
    }
    return IOHIDEventCreateAccelerometerEvent(nullptr, mach_absolute_time(), values[0], values[1], values[2], 0);
}

Ref<Value> IIOAccelerometer::getProperty(const std::string& key) {
    if (key == "PrimaryUsagePage")
        return Number::withUnsignedInt(kAccelerometerUsagePage);
    if (key == "PrimaryUsage")
        return Number::withUnsignedInt(kAccelerometerUsage);
    if (key == "ReportInterval")
        return Number::withDouble(_intervalUs);
    if (const char* name = iio_device_get_name(_device); key == "Product" && name != nullptr)
        return makeRef<String>(name);
    return nullptr;
}

bool IIOAccelerometer::setProperty(const std::string& key, const Ref<Value>& value) {
    const auto intervalUs = reportIntervalUs(key, value);
    if (!intervalUs)
        return false;
    _intervalUs = *intervalUs;
    return true;
}

void IIOAccelerometer::applyInterval() noexcept {
    const double intervalUs = _intervalUs;
    if (_appliedIntervalUs.exchange(intervalUs) != intervalUs)
        setSamplingFrequency(std::micro::den / intervalUs);
}

// The frequency may belong to the axes or to the device. A refused step is skipped.
void IIOAccelerometer::setSamplingFrequency(double hz) const {
    constexpr const char* kFrequency = "sampling_frequency";
    constexpr const char* kOffered = "sampling_frequency_available";
    iio_channel* const channel = _axes[0].channel;
    const bool isTheDevices = iio_channel_find_attr(channel, kFrequency) == nullptr;
    std::string offered = textOf(iio_channel_attr_read, channel, kOffered);
    if (offered.empty())
        offered = textOf(iio_device_attr_read, _device, kOffered);

    std::string frequency = nearestSamplingFrequency(offered, hz);
    if (frequency.empty())
        frequency = std::to_string(hz);
    std::ignore = isTheDevices ? iio_device_attr_write(_device, kFrequency, frequency.c_str())
                               : iio_channel_attr_write(channel, kFrequency, frequency.c_str());
    // HID sensors do not report smaller changes.
    if (iio_channel_find_attr(channel, "hysteresis") != nullptr)
        std::ignore = iio_channel_attr_write(channel, "hysteresis", "0");
}

RunLoopSource IIOAccelerometer::startEvents(RunLoop& loop, std::string_view mode, EventHandler handler) {
    const auto self = Ref<IIOAccelerometer>::retained(this);
    const auto read = [self] {
        self->applyInterval();
        return self->readEvent();
    };
    EventReader reader{.read = read, .interval = [self] { return self->intervalTicks(); }};
    return startReading(loop, mode, std::move(reader), std::move(handler));
}

std::uint64_t IIOAccelerometer::intervalTicks() const noexcept { return ticksOf(_intervalUs); }

std::vector<Ref<HIDEventService>> findAccelerometers() {
    std::vector<Ref<HIDEventService>> accelerometers;
    iio_context* const found = iio_create_local_context();
    if (found == nullptr)
        return accelerometers;
    const std::shared_ptr<iio_context> context(found, iio_context_destroy);
    for (unsigned i = 0; i < iio_context_get_devices_count(found); ++i) {
        if (auto accelerometer = IIOAccelerometer::make(context, iio_context_get_device(found, i)))
            accelerometers.emplace_back(std::move(accelerometer));
    }
    return accelerometers;
}

} // namespace VeltoTouch
