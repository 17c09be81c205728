#include "Velto/Surface/Step.h"

#include "Plugin/Reports/Regions.h"
#include "Velto/Surface/Alternatives.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch::Surface {
namespace {

std::string placeNames() { return regionPlaces() + " or a pad A to O"; }

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
    for (const RegionRow& row : kRegionsWithPads) {
        if (row.place == name)
            return padOf(row.middlePad);
    }
    const bool isPad = name.size() == 1 && name.front() >= 'A' && padOf(name.front()) < kPadCount;
    return isPad ? std::optional(padOf(name.front())) : std::nullopt;
}

void readPlace(std::string_view text, std::string_view name, Step& step) {
    const auto pad = padNamed(name);
    if (!pad)
        refuse(text, fmt::format("no place \"{}\" ({})", name, placeNames()));
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
    refuse(text, fmt::format("\"{}\" is not two places, as in volume-up-volume-down ({})", names, placeNames()));
}

std::uint32_t readDuration(std::string_view text, std::string_view digits) {
    std::uint32_t duration = 0;
    const char* const end = digits.data() + digits.size();
    const auto [next, error] = std::from_chars(digits.data(), end, duration);
    if (error != std::errc() || next != end || duration == 0 || duration > kLongestStepMs)
        refuse(text, fmt::format("\"{}\" is no duration (1 to {} ms)", digits, kLongestStepMs));
    return duration;
}

const StepForm& formNamed(std::string_view text, std::string_view name) {
    const auto* const form = std::ranges::find(kStepForms, name, &StepForm::name);
    if (form != kStepForms.end())
        return *form;
    std::vector<std::string_view> names(kStepForms.size());
    std::ranges::transform(kStepForms, names.begin(), &StepForm::name);
    refuse(text, fmt::format("no such step ({})", alternatives(std::move(names))));
}

} // namespace

Step parseStep(std::string_view text) {
    std::optional<std::string_view> rest = text;
    const StepForm& form = formNamed(text, takeField(rest).value_or(""));
    Step step{.action = form.action, .durationMs = form.defaultMs};
    if (form.takes == Takes::Place || form.takes == Takes::TwoPlaces) {
        const auto where = takeField(rest);
        if (!where)
            refuse(text, fmt::format("needs a place ({})", placeNames()));
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

std::string regionPlaces() {
    std::vector<std::string_view> places;
    for (const RegionRow& row : kRegionsWithPads)
        places.push_back(row.place);
    return fmt::format("{}", fmt::join(places, ", "));
}

} // namespace VeltoTouch::Surface
