#pragma once

#include "Plugin/Reports/InputReport.h"
#include "Velto/Surface/Step.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace VeltoTouch::Bench {

// The contact in a stretch of images, found without the recognizer: it lasts from the first image in which the signal
// of a pad exceeds the noise floor to the first in which none does. One thread.
class RawContact {
public:
    // A time on both clocks.
    struct Moment {
        std::uint64_t ns = 0;
        std::uint32_t deviceMs = 0;
    };

    // `begin`: when there is no image yet.
    explicit RawContact(const Moment& begin) noexcept : _newest(begin) {}

    void add(std::uint64_t ns, const InputReport::Image& image);
    // The controller has restarted, and its clock.
    void reset() noexcept { _wasReset = true; }

    // From the first contact's start to the last one's end, or to the newest image; without a contact, of all images.
    [[nodiscard]] Moment start() const noexcept { return _contacts > 0 ? _start : first(); }
    [[nodiscard]] Moment end() const noexcept { return sinceFirst(_contacts > 0 ? _end : _newest); }
    // The first and the newest image.
    [[nodiscard]] Moment first() const noexcept { return _first.value_or(_newest); }
    [[nodiscard]] Moment newest() const noexcept { return sinceFirst(_newest); }

    // Whether a contact that began in these images has not ended.
    [[nodiscard]] bool isInProgress() const noexcept { return _isTouching && !_beganBefore; }

    // Why this cannot be what was asked for; empty if it can.
    [[nodiscard]] std::string_view faultAs(const Surface::Step& asked) const;

private:
    struct Strongest {
        std::uint64_t ns;
        std::size_t pad;
        std::int16_t signal;
    };

    [[nodiscard]] Moment sinceFirst(Moment moment) const noexcept;
    [[nodiscard]] bool isIn(const std::vector<Strongest>& images, std::size_t pad) const;

    std::optional<Moment> _first;
    Moment _newest;
    bool _beganBefore = false; // the contact was there with the first image
    bool _isTouching = false;
    bool _wasReset = false;
    std::size_t _contacts = 0;
    Moment _start;
    Moment _end;
    std::vector<Strongest> _strongest; // of each image with a contact
};

} // namespace VeltoTouch::Bench
