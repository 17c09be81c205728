#include "Velto/Surface/Step.h"

#include "Plugin/Reports/InputReport.h"

#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>

#include <fmt/format.h>

namespace VeltoTouch::Surface {
namespace {

enum class Takes : std::uint8_t { Nothing, Duration, Place, TwoPlaces }; // a place may have a duration behind it

struct Form {
    Action action;
    std::string_view name;
    Takes takes;
    std::uint32_t defaultMs;
};

// In the order of the actions.
constexpr std::array<Form, 7> kForms{{
    {Action::Tap, "tap", Takes::Place, 100},
    {Action::Hold, "hold", Takes::Place, 900},
    {Action::Slide, "slide", Takes::TwoPlaces, 1200},
    {Action::Palm, "palm", Takes::Duration, 1000},
    {Action::Brush, "brush", Takes::Place, 400},
    {Action::Idle, "idle", Takes::Duration, 300},
    {Action::Reset, "reset", Takes::Nothing, 0},
}};

struct NamedPlace {
    std::string_view name;
    char middlePad;
};

constexpr std::array<NamedPlace, 3> kNamedPlaces{{{"play-pause", 'K'}, {"volume-up", 'I'}, {"volume-down", 'M'}}};
constexpr std::string_view kPlaceNames = "play-pause, volume-up, volume-down or a pad A to O";

constexpr std::size_t padOf(char letter) noexcept { return static_cast<std::size_t>(letter - 'A'); }

[[noreturn]] void refuse(std::string_view step, std::string_view reason) {
    throw std::invalid_argument(fmt::format("step \"{}\": {}", step, reason));
}

// The text up to the next colon, which is taken off with it; nothing where no text is left.
std::optional<std::string_view> takeField(std::optional<std::string_view>& rest) {
    if (!rest)
        return std::nullopt;
    const std::size_t colon = rest->find(':');
    const std::string_view field = rest->substr(0, colon);
    rest = colon == std::string_view::npos ? std::nullopt : std::optional(rest->substr(colon + 1));
    return field;
}

std::optional<std::size_t> padNamed(std::string_view name) {
    for (const NamedPlace& place : kNamedPlaces) {
        if (place.name == name)
            return padOf(place.middlePad);
    }
    const bool isPad = name.size() == 1 && name.front() >= 'A' && padOf(name.front()) < kPadCount;
    return isPad ? std::optional(padOf(name.front())) : std::nullopt;
}

void readPlace(std::string_view text, std::string_view name, Step& step) {
    const auto pad = padNamed(name);
    if (!pad)
        refuse(text, fmt::format("no place \"{}\" ({})", name, kPlaceNames));
    step.pad = step.endPad = *pad;
}

// Names of places have hyphens too: the hyphen in question has a place on both sides.
void readTwoPlaces(std::string_view text, std::string_view names, Step& step) {
    for (std::size_t at = names.find('-'); at != std::string_view::npos; at = names.find('-', at + 1)) {
        const auto start = padNamed(names.substr(0, at));
        const auto end = padNamed(names.substr(at + 1));
        if (start && end) {
            step.pad = *start;
            step.endPad = *end;
            return;
        }
    }
    refuse(text, fmt::format("\"{}\" is not two places, as in volume-up-volume-down ({})", names, kPlaceNames));
}

std::uint32_t readDuration(std::string_view text, std::string_view digits) {
    std::uint32_t duration = 0;
    const char* const end = digits.data() + digits.size();
    const auto [next, error] = std::from_chars(digits.data(), end, duration);
    if (error != std::errc() || next != end || duration == 0 || duration > kLongestStepMs)
        refuse(text, fmt::format("\"{}\" is no duration (1 to {} ms)", digits, kLongestStepMs));
    return duration;
}

const Form& formNamed(std::string_view text, std::string_view name) {
    for (const Form& form : kForms) {
        if (form.name == name)
            return form;
    }
    refuse(text, "no such step (tap, hold, slide, palm, brush, idle or reset)");
}

} // namespace

Step parseStep(std::string_view text) {
    std::optional<std::string_view> rest = text;
    const Form& form = formNamed(text, takeField(rest).value_or(""));
    Step step{.action = form.action, .durationMs = form.defaultMs};
    if (form.takes == Takes::Place || form.takes == Takes::TwoPlaces) {
        const auto where = takeField(rest);
        if (!where)
            refuse(text, fmt::format("needs a place ({})", kPlaceNames));
        form.takes == Takes::Place ? readPlace(text, *where, step) : readTwoPlaces(text, *where, step);
    }
    if (form.takes != Takes::Nothing) {
        if (const auto duration = takeField(rest))
            step.durationMs = readDuration(text, *duration);
    }
    if (rest)
        refuse(text, fmt::format("\":{}\" is too much", *rest));
    return step;
}

std::string_view nameOf(Action action) noexcept { return kForms[static_cast<std::size_t>(action)].name; }

} // namespace VeltoTouch::Surface
