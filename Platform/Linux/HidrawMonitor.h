#pragma once

#include "Platform/Linux/HidrawNodes.h"
#include "Platform/Linux/RunLoop.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

struct udev_monitor;

namespace VeltoTouch {

// The hidraw nodes of this machine whose devices are wanted, and those that come and go. Used on one thread.
class HidrawMonitor {
public:
    using Handler = std::function<void(const HidrawNode& node)>;

    // Looks what is there. What comes and goes from here on is kept until `start`. Throws std::system_error where
    // the kernel tells no news.
    explicit HidrawMonitor(HidrawMatch match);
    HidrawMonitor(const HidrawMonitor&) = delete;
    HidrawMonitor& operator=(const HidrawMonitor&) = delete;
    ~HidrawMonitor();

    // Those that are there, as far as was told: what has been there from the beginning or was added, and not removed.
    [[nodiscard]] const std::vector<HidrawNode>& nodes() const noexcept { return _nodes; }

    // Adds a source to a mode of the calling thread's run loop that tells of every node once when it comes and once
    // when it goes. A device that is plugged in again is another one, under whatever path, and the old one is told to
    // have gone before. What comes and goes between two looks at it is not told. The monitor must outlive the source.
    // Throws std::system_error.
    [[nodiscard]] RunLoopSource start(RunLoop& loop, std::string_view mode, Handler added, Handler removed);

private:
    [[nodiscard]] bool hasNews();
    void update(const Handler& added, const Handler& removed);

    const HidrawMatch _match;
    const std::unique_ptr<udev_monitor, udev_monitor* (*)(udev_monitor*)> _monitor;
    std::vector<HidrawNode> _nodes;
};

} // namespace VeltoTouch
