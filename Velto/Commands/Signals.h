#pragma once

namespace VeltoTouch::Velto {

// SIGINT and SIGTERM as a descriptor to wait for. Made before the program has other threads, which take over that
// the signals are blocked.
class StopSignals {
public:
    // Throws std::system_error.
    StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals();

    // Readable once a signal has come.
    [[nodiscard]] int descriptor() const noexcept { return _descriptor; }

    // The program is ending: from here on, the second signal of all ends it at once, should it be stuck. The first
    // still has no other effect.
    void beginEnd() noexcept;

private:
    int _descriptor;
};

} // namespace VeltoTouch::Velto
