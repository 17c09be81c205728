#pragma once

#include "Plugin/Recording/Frame.h"
#include "Velto/Bench/RawContact.h"
#include "Velto/Surface/Step.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace VeltoTouch::Bench {

// Leads a person through a list of gestures and labels what is done:
//
//   pause  ->  ask  ->  pause ...          done as asked
//                   ->  decide  ->  pause  spoiled: no contact, more than one, the wrong region, ...
//
// Its clock is that of the reports. A contact that begins in time is waited for to its end. No recognizer takes part. A
// label stands when the next gesture is asked for, until then it may be taken back. An attempt that is taken back or
// repeated is labelled as spoiled, from when it was asked for to its end; one that looks spoiled and is accepted, as
// what was asked for. One thread.
class Collector {
public:
    enum class Phase : std::uint8_t { Pause, Ask, Decide, End };
    enum class Key : char { Repeat = 'r', Next = 'n', Spoiled = 'x', Quit = 'q' };

    struct Handlers {
        std::function<void(const Frame& label)> label; // its time is in the past
        std::function<void()> change;                  // of the phase
    };

    Collector(std::vector<Surface::Step> asked, std::uint64_t pauseNs, std::uint64_t askNs, Handlers handlers);

    // Takes in a report, in the order of time.
    void report(const Frame& report);
    // Repeat and Spoiled are of the gesture that was done last; Next accepts it. Others mean nothing.
    void press(char key);
    // No more comes. An attempt in progress is spoiled.
    void finish();

    [[nodiscard]] Phase phase() const noexcept { return _phase; }
    // The gesture that is asked for now or next, or that is to be decided on, from 0; as many as there are behind the
    // last.
    [[nodiscard]] std::size_t current() const noexcept { return _phase == Phase::Decide ? _attempt->number : _current; }
    [[nodiscard]] const std::vector<Surface::Step>& asked() const noexcept { return _asked; }
    // Why the last attempt is spoiled; empty if it is not.
    [[nodiscard]] const std::string& fault() const noexcept { return _fault; }
    // Until the phase ends by itself.
    [[nodiscard]] double secondsLeft() const noexcept;
    [[nodiscard]] std::size_t labelled() const noexcept { return _labelled; }
    [[nodiscard]] std::size_t spoiled() const noexcept { return _spoiled; }

private:
    struct Attempt {
        std::size_t number; // of the gesture
        RawContact contact;
    };

    void enter(Phase phase);
    void ask();
    void judge();
    void accept();
    void spoil(const std::string& reason);
    void write(const RawContact::Moment& start, const RawContact::Moment& end, std::vector<Dictionary::Entry> more);

    const std::vector<Surface::Step> _asked;
    const std::uint64_t _pauseNs;
    const std::uint64_t _askNs;
    const Handlers _handlers;
    Phase _phase = Phase::Pause;
    std::optional<std::uint64_t> _phaseStartNs;
    std::uint64_t _nowNs = 0;
    std::uint32_t _newestImageMs = 0; // the device's clock
    std::size_t _current = 0;
    std::string _fault;
    std::optional<Attempt> _attempt; // in progress, or the last while its label does not stand
    std::size_t _labelled = 0;
    std::size_t _spoiled = 0;
};

} // namespace VeltoTouch::Bench
