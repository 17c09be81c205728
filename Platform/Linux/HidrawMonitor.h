#pragma once

#include "Platform/Linux/HidrawNodes.h"
#include "Platform/Linux/RunLoop.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

struct udev_monitor;

namespace VeltoTouch {

// Lists the hidraw nodes whose devices match, and reports those that are added and removed. Used on one thread.
class HidrawMonitor {
public:
    using Handler = std::function<void(const HidrawNode& node)>;

    // Lists the nodes; changes from here on are kept until `start`. Throws std::system_error if the kernel does not
    // report changes.
    explicit HidrawMonitor(HidrawMatch match);
    HidrawMonitor(const HidrawMonitor&) = delete;
    HidrawMonitor& operator=(const HidrawMonitor&) = delete;
    ~HidrawMonitor();

    // Returns the nodes that are present, as far as changes have been reported.
    [[nodiscard]] const std::vector<HidrawNode>& nodes() const noexcept { return _nodes; }

    // Adds a source to a mode of the calling thread's run loop that reports each node once when it is added and once
    // when it is removed. A device that is plugged in again is a new node, whatever its path, and the removal of the
    // old one is reported first. A node that is added and removed between two looks is not reported. The monitor must
    // outlive the source. Throws std::system_error.
    [[nodiscard]] RunLoopSource start(RunLoop& loop, std::string_view mode, Handler added, Handler removed);

private:
    [[nodiscard]] bool hasNews();
    void update(const Handler& added, const Handler& removed);

    const HidrawMatch _match;
    const std::unique_ptr<udev_monitor, udev_monitor* (*)(udev_monitor*)> _monitor;
    std::vector<HidrawNode> _nodes;
};

} // namespace VeltoTouch
