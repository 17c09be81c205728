#include "Platform/Linux/HidrawNodes.h"

#include "Platform/Linux/HidrawProperties.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>
#include <utility>

#include <libudev.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

struct Unref {
    void operator()(udev* context) const noexcept { udev_unref(context); }
    void operator()(udev_enumerate* list) const noexcept { udev_enumerate_unref(list); }
    void operator()(udev_device* device) const noexcept { udev_device_unref(device); }
};
template <class T>
using Udev = std::unique_ptr<T, Unref>;

// Empty if there is none.
std::string property(udev_device* device, const char* key) {
    const char* value = udev_device_get_property_value(device, key);
    return value == nullptr ? "" : value;
}

// "0003:0000FE01:00008002": bus, vendor and product.
std::string busOf(std::string_view hidID) {
    std::uint32_t bus = 0;
    std::from_chars(hidID.data(), hidID.data() + hidID.size(), bus, 16);
    return nameOfBus(bus);
}

// Returns nothing if the device is removed meanwhile.
std::optional<HidrawNode> nodeIn(udev* context, const char* folder) {
    const Udev<udev_device> node(udev_device_new_from_syspath(context, folder));
    const char* path = node ? udev_device_get_devnode(node.get()) : nullptr;
    // Belongs to the node.
    udev_device* hid = node ? udev_device_get_parent_with_subsystem_devtype(node.get(), "hid", nullptr) : nullptr;
    if (path == nullptr || hid == nullptr)
        return std::nullopt;
    return HidrawNode{.path = path,
                      .folder = folder,
                      .product = property(hid, "HID_NAME"),
                      .serialNumber = property(hid, "HID_UNIQ"),
                      .bus = busOf(property(hid, "HID_ID"))};
}

} // namespace

std::vector<HidrawNode> findHidrawNodes(const HidrawMatch& match) {
    const Udev<udev> context(udev_new());
    const Udev<udev_enumerate> list(udev_enumerate_new(context.get()));
    udev_enumerate_add_match_subsystem(list.get(), "hidraw");
    if (udevdIsRunning())
        udev_enumerate_add_match_is_initialized(list.get());
    udev_enumerate_scan_devices(list.get());

    std::vector<HidrawNode> nodes;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get())) {
        const char* folder = udev_list_entry_get_name(entry);
        const auto descriptor = readReportDescriptor(folder);
        if (!descriptor || !match(*descriptor))
            continue;
        if (auto node = nodeIn(context.get(), folder))
            nodes.push_back(std::move(*node));
    }
    // Equally long paths differ in the digits of their numbers alone.
    std::ranges::sort(nodes, {}, [](const HidrawNode& node) { return std::pair(node.path.size(), node.path); });
    return nodes;
}

bool udevdIsRunning() noexcept { return ::access("/run/udev/control", F_OK) == 0; }

} // namespace VeltoTouch
