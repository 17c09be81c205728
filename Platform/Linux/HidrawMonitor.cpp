#include "Platform/Linux/HidrawMonitor.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <libudev.h>

// A change event only causes a new look: the nodes present are compared with those known. The first look, an event, a
// repeated event (as `udevadm trigger` sends) and lost events are therefore handled alike, and a removal, whose event
// no longer says what the device was, is noticed by the node's absence.

namespace VeltoTouch {
namespace {

// A udevd receives the kernel's event, runs its rules, which set the node's owner and rights, and then sends its own
// event: only then can the node be used. Without a udevd the kernel's events are used.
const char* newsSource() noexcept { return udevdIsRunning() ? "udev" : "kernel"; }

udev_monitor* listen() {
    udev* const context = udev_new();
    udev_monitor* const monitor = udev_monitor_new_from_netlink(context, newsSource());
    udev_unref(context); // the monitor keeps it
    if (monitor == nullptr)
        throw std::system_error(errno, std::generic_category(), "news of devices");
    udev_monitor_filter_add_match_subsystem_devtype(monitor, "hidraw", nullptr);
    if (const int status = udev_monitor_enable_receiving(monitor); status < 0) {
        udev_monitor_unref(monitor);
        throw std::system_error(-status, std::generic_category(), "news of devices");
    }
    return monitor;
}

bool contains(const std::vector<HidrawNode>& nodes, const HidrawNode& node) {
    return std::ranges::find(nodes, node.folder, &HidrawNode::folder) != nodes.end();
}

} // namespace

// Listens first, so that nothing falls between the look and the news.
HidrawMonitor::HidrawMonitor(HidrawMatch match)
    : _match(std::move(match)), _monitor(listen(), udev_monitor_unref), _nodes(findHidrawNodes(_match)) {}

HidrawMonitor::~HidrawMonitor() = default;

int HidrawMonitor::descriptor() const noexcept { return udev_monitor_get_fd(_monitor.get()); }

// Takes the events that have come. Returns whether there were any, or the kernel has dropped some: one of those may
// have been about a node of ours.
bool HidrawMonitor::takeEvents() {
    bool hasCome = false;
    while (udev_device* const device = udev_monitor_receive_device(_monitor.get())) {
        udev_device_unref(device);
        hasCome = true;
    }
    return hasCome || errno == ENOBUFS;
}

void HidrawMonitor::readChanges(const Handler& added, const Handler& removed) {
    if (!takeEvents())
        return;
    const std::vector<HidrawNode> before = std::exchange(_nodes, findHidrawNodes(_match));
    for (const HidrawNode& node : before) {
        if (!contains(_nodes, node))
            removed(node);
    }
    for (const HidrawNode& node : _nodes) {
        if (!contains(before, node))
            added(node);
    }
}

} // namespace VeltoTouch
