#pragma once

#include "Platform/Linux/HidrawNodes.h"

#include <functional>
#include <memory>
#include <vector>

struct udev_monitor;

namespace VeltoTouch {

// Lists the hidraw nodes whose devices match, and reports those that are added and removed. Used on one thread.
class HidrawMonitor {
public:
    using Handler = std::function<void(const HidrawNode& node)>;

    // Lists the nodes; changes from here on are kept until `readChanges`. Throws std::system_error if the kernel does
    // not report changes.
    explicit HidrawMonitor(HidrawMatch match);
    HidrawMonitor(const HidrawMonitor&) = delete;
    HidrawMonitor& operator=(const HidrawMonitor&) = delete;
    ~HidrawMonitor();

    // Returns the nodes that are present, as far as changes have been reported.
    [[nodiscard]] const std::vector<HidrawNode>& nodes() const noexcept { return _nodes; }

    // Readable when there are changes to read.
    [[nodiscard]] int descriptor() const noexcept;
    // Reads the changes without waiting: calls a handler once for each node that was added and for each that was
    // removed. A device that is plugged in again is a new node, whatever its path, and the removal of the old one is
    // reported first. A node that is added and removed between two calls is not reported.
    void readChanges(const Handler& added, const Handler& removed);

private:
    [[nodiscard]] bool takeEvents();

    const HidrawMatch _match;
    const std::unique_ptr<udev_monitor, udev_monitor* (*)(udev_monitor*)> _monitor;
    std::vector<HidrawNode> _nodes;
};

} // namespace VeltoTouch
