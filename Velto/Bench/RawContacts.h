#pragma once

#include "Plugin/Reports/InputReport.h"
#include "Velto/Surface/Step.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace VeltoTouch::Bench {

// The contacts in a stretch of images, found without the recognizer: each lasts from the first image in which the
// signal of a pad exceeds the noise floor to the first in which none does. One thread.
class RawContacts {
public:
    // A time on both clocks.
    struct Moment {
        std::uint64_t ns = 0;
        std::uint32_t deviceMs = 0;
    };
    struct Span {
        Moment start;
        Moment end;
    };

    // `begin` stands for the newest image until there is one.
    explicit RawContacts(const Moment& begin) noexcept : _newest(begin) {}

    // Takes in an image, in the order of time.
    void add(std::uint64_t ns, const InputReport::Image& image);
    // Called when the controller has restarted, and its clock with it.
    void reset() noexcept { _wasReset = true; }

    // From the first to the newest image.
    [[nodiscard]] Span allImages() const noexcept { return {.start = first(), .end = sinceFirst(_newest)}; }
    // Of each contact.
    [[nodiscard]] std::vector<Span> spans() const;
    // As spans(), the one that was meant as `asked` first: of those that can be it, or of all if none can, the one
    // that pressed most. Without a contact, that of all images.
    [[nodiscard]] std::vector<Span> spansAs(const Surface::Step& asked) const;

    // Whether a contact that began in these images has not ended.
    [[nodiscard]] bool isInProgress() const noexcept { return _isTouching && !_beganBefore; }
    // When the last contact ended; none without one or if it has not.
    [[nodiscard]] std::optional<std::uint64_t> endNs() const noexcept;

    // Why this cannot be what was asked for; empty if it can.
    [[nodiscard]] std::string faultAs(const Surface::Step& asked) const;

private:
    struct Strongest {
        std::uint64_t ns;
        std::size_t pad;
        std::int16_t signal;
    };
    struct Contact {
        Span span;
        std::vector<Strongest> images; // while it lasted
    };

    [[nodiscard]] static bool isIn(const std::vector<Strongest>& images, std::size_t pad);
    [[nodiscard]] static bool canBe(const Surface::Step& asked, const Contact& contact);
    [[nodiscard]] Moment first() const noexcept { return _first.value_or(_newest); }
    [[nodiscard]] Moment sinceFirst(Moment moment) const noexcept;

    std::optional<Moment> _first;
    Moment _newest;
    bool _beganBefore = false; // the contact was there with the first image
    bool _isTouching = false;
    bool _wasReset = false;
    std::vector<Contact> _contacts;
};

} // namespace VeltoTouch::Bench
