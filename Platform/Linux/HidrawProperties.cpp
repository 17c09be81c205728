#include "Platform/Linux/HidrawProperties.h"

#include "Platform/Linux/ReportDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include <linux/hidraw.h>
#include <linux/input.h>
#include <sys/ioctl.h>

namespace VeltoTouch {
namespace {

constexpr std::size_t kLongestText = 256; // the kernel's own texts are at most 128 bytes

template <class Argument>
void ask(int node, unsigned long request, Argument& answer, const char* what) {
    if (::ioctl(node, request, &answer) < 0)
        throw std::system_error(errno, std::generic_category(), what);
}

std::string readReportDescriptor(int node) {
    int size = 0;
    ask(node, HIDIOCGRDESCSIZE, size, "size of the report descriptor");
    hidraw_report_descriptor descriptor{};
    descriptor.size = static_cast<std::uint32_t>(std::clamp(size, 0, HID_MAX_DESCRIPTOR_SIZE));
    ask(node, HIDIOCGRDESC, descriptor, "report descriptor");
    return {std::begin(descriptor.value), std::begin(descriptor.value) + descriptor.size};
}

// Empty where there is none, and where the kernel does not know the request.
std::string readText(int node, unsigned long request) {
    std::array<char, kLongestText + 1> text{}; // ends with 0
    return ::ioctl(node, request, text.data()) < 0 ? std::string() : std::string(text.data());
}

class Properties {
public:
    void add(const char* key, std::uint64_t number) {
        _entries.push_back({.key = key, .value = Number::withUnsignedLong(number)});
    }
    void addIfAny(const char* key, std::string text) {
        if (!text.empty())
            _entries.push_back({.key = key, .value = makeRef<String>(std::move(text))});
    }
    void addReportDescriptor(const std::string& bytes) {
        const ReportDescriptor descriptor({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        _entries.push_back({.key = "ReportDescriptor", .value = makeRef<Data>(bytes)});
        add("MaxInputReportSize", descriptor.longestReport(kIOHIDReportTypeInput));
        if (const auto usage = descriptor.primaryUsage()) {
            add("PrimaryUsagePage", usage->page);
            add("PrimaryUsage", usage->usage);
        }
    }
    [[nodiscard]] Ref<Dictionary> dictionary() && { return makeRef<Dictionary>(std::move(_entries)); }

private:
    std::vector<Dictionary::Entry> _entries;
};

} // namespace

const char* nameOfBus(std::uint32_t bus) noexcept {
    switch (bus) {
    case BUS_USB:
        return "USB";
    case BUS_BLUETOOTH:
        return "Bluetooth";
    case BUS_VIRTUAL:
        return "Virtual";
    case BUS_I2C:
        return "I2C";
    case BUS_SPI:
        return "SPI";
    default:
        return "";
    }
}

Ref<Dictionary> readHidrawProperties(int node) {
    Properties properties;
    properties.addReportDescriptor(readReportDescriptor(node));
    hidraw_devinfo information{};
    ask(node, HIDIOCGRAWINFO, information, "vendor and product");
    properties.add("VendorID", static_cast<std::uint16_t>(information.vendor));
    properties.add("ProductID", static_cast<std::uint16_t>(information.product));
    properties.addIfAny("Transport", nameOfBus(information.bustype));
    properties.addIfAny("Product", readText(node, HIDIOCGRAWNAME(kLongestText)));
    properties.addIfAny("PhysicalLocation", readText(node, HIDIOCGRAWPHYS(kLongestText)));
#ifdef HIDIOCGRAWUNIQ
    properties.addIfAny("SerialNumber", readText(node, HIDIOCGRAWUNIQ(kLongestText)));
#endif
    return std::move(properties).dictionary();
}

} // namespace VeltoTouch
