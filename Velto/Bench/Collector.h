#pragma once

#include "Plugin/Recording/Frame.h"
#include "Velto/Bench/RawContacts.h"
#include "Velto/Surface/Simulation.h"
#include "Velto/Surface/Step.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VeltoTouch::Bench {

// Leads a person through a list of gestures and labels what is done:
//
//   pause  ->  ask  ->  pause ...          done as asked
//                   ->  decide  ->  pause  spoiled: no contact, more than one, the wrong region, ...
//
// Its clock is that of the reports. An attempt ends with the time for it, or when the surface has been quiet for so
// long after a contact that no second one is to be expected. A contact that begins in time is waited for beyond it, but
// not for ever. No recognizer takes part.
//
// A label stands when the next gesture is asked for, until then it may be taken back. An attempt that is taken back or
// repeated is labelled as spoiled, from when it was asked for to its end. One that looks spoiled and is accepted is
// labelled as what was asked for; of several contacts, the one that was meant (RawContacts.h) is, and each other one as
// spoiled, as is a contact while nothing is asked for. One thread.
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
    // Takes a key: Repeat and Spoiled take back the gesture that was done last, Next accepts it, Quit finishes. Any
    // other character does nothing.
    void press(char key);
    // Called when no more reports come. An attempt in progress is spoiled.
    void finish();

    [[nodiscard]] Phase phase() const noexcept { return _phase; }
    // The gesture that is asked for now or next, or that is to be decided on, from 0; as many as there are behind the
    // last.
    [[nodiscard]] std::size_t current() const noexcept { return _phase == Phase::Decide ? _attempt->number : _current; }
    [[nodiscard]] const std::vector<Surface::Step>& asked() const noexcept { return _asked; }
    // The gesture whose label may be taken back; none if there is none.
    [[nodiscard]] std::optional<std::size_t> last() const noexcept {
        return _attempt && _phase == Phase::Pause ? std::optional(_attempt->number) : std::nullopt;
    }
    // Why the last attempt is spoiled; empty if it is not.
    [[nodiscard]] const std::string& fault() const noexcept { return _fault; }
    // Returns what is left of the pause, or of the time for a gesture; 0 when it is over.
    [[nodiscard]] double secondsLeft() const noexcept;
    [[nodiscard]] std::size_t labelled() const noexcept { return _labelled; }
    [[nodiscard]] std::size_t spoiled() const noexcept { return _spoiled; }

private:
    struct Attempt {
        std::size_t number; // of the gesture
        RawContacts contacts;
    };

    [[nodiscard]] std::uint64_t attemptNs() const noexcept;
    void enter(Phase phase);
    void ask();
    void judge();
    void accept();
    void spoil(const std::string& reason);
    [[nodiscard]] Surface::Simulation::Label labelOfAttempt(const RawContacts::Span& span) const;
    void writeSpoiled(const RawContacts::Span& span, std::string_view reason);
    void writeUnasked();
    void write(const RawContacts::Span& span, const Surface::Simulation::Label& label,
               const std::vector<Dictionary::Entry>& more);

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
    RawContacts _unasked{{}};        // since the last attempt
    std::size_t _labelled = 0;
    std::size_t _spoiled = 0;
};

} // namespace VeltoTouch::Bench
