#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace VeltoTouch::Tests {

// Whether something comes true before long.
[[nodiscard]] inline bool eventually(const std::function<bool()>& isTrue,
                                     std::chrono::milliseconds pause = std::chrono::milliseconds(10)) {
    constexpr std::chrono::seconds kPatience{30};
    for (const auto deadline = std::chrono::steady_clock::now() + kPatience; !isTrue();) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(pause);
    }
    return true;
}

} // namespace VeltoTouch::Tests
