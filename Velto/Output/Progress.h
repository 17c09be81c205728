#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace VeltoTouch::Velto {

// Shows the progress of long work in a line on standard error, only on a terminal and only after the first second. The
// line is cleared when the work ends.
class Progress {
public:
    // `total` is the amount of work; 0 if unknown.
    Progress(std::string_view work, std::uint64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    // Cheap enough to be called for every frame.
    void update(std::uint64_t done) {
        if (_isShown && --_callsUntilLook == 0)
            look(done);
    }
    // The same for steps that may be long.
    void step(std::uint64_t done) {
        if (_isShown)
            look(done);
    }

private:
    void look(std::uint64_t done);

    const std::string _work;
    const std::uint64_t _total;
    const bool _isShown;
    bool _isWritten = false;
    int _callsUntilLook = 1;
    std::chrono::steady_clock::time_point _next;
};

} // namespace VeltoTouch::Velto
