#include "Velto/Surface/Scripts.h"

#include "Plugin/Reports/Regions.h"

#include <array>
#include <optional>
#include <utility>

namespace VeltoTouch::Surface {
namespace {

struct Habit {
    Action action;
    std::uint32_t share; // of a hundred gestures
    std::int64_t shortestMs;
    std::int64_t longestMs;
};

constexpr std::array<Habit, 5> kHabits{{
    {Action::Tap, 50, 60, 220},
    {Action::Hold, 30, 700, 2500},
    {Action::Slide, 8, 1000, 2200},
    {Action::Palm, 4, 300, 2000},
    {Action::Brush, 8, 80, 800},
}};
constexpr std::int64_t kShortestPauseMs = 150;
constexpr std::int64_t kLongestPauseMs = 1500;

std::size_t middleOf(PixelRegion region) noexcept { return padOf(rowOf(region).middlePad); }

} // namespace

Simulation::StepSource scriptOf(std::vector<Step> steps) {
    return [remaining = std::move(steps), next = std::size_t{0}]() mutable -> std::optional<Step> {
        return next < remaining.size() ? std::optional(remaining[next++]) : std::nullopt;
    };
}

Step MadeUpUser::next() {
    if (std::exchange(_pausesNext, !_pausesNext)) {
        const auto pauseMs = static_cast<std::uint32_t>(_random.between(kShortestPauseMs, kLongestPauseMs));
        return {.action = Action::Idle, .durationMs = pauseMs};
    }
    return nextGesture();
}

Step MadeUpUser::nextGesture() {
    std::uint32_t draw = _random.below(100);
    const Habit* habit = kHabits.data();
    while (draw >= habit->share)
        draw -= habit++->share;

    Step step{.action = habit->action};
    step.durationMs = static_cast<std::uint32_t>(_random.between(habit->shortestMs, habit->longestMs));
    if (step.action == Action::Slide) { // from one volume control to the other
        const bool startsUp = _random.below(2) == 0;
        step.pad = middleOf(startsUp ? PixelRegion::VolumeUp : PixelRegion::VolumeDown);
        step.endPad = middleOf(startsUp ? PixelRegion::VolumeDown : PixelRegion::VolumeUp);
    } else if (step.action != Action::Palm) {
        step.pad = step.endPad = somePlace();
    }
    return step;
}

// Mostly the middle of a control, sometimes any pad.
std::size_t MadeUpUser::somePlace() {
    const bool aims = _random.below(4) != 0;
    return aims ? padOf(kRegionsWithPads[_random.below(kRegionsWithPads.size())].middlePad) : _random.below(kPadCount);
}

std::vector<Step> scriptFor(const std::vector<std::string>& steps, std::uint64_t seed, std::uint32_t madeUpGestures) {
    std::vector<Step> script;
    for (const std::string& step : steps)
        script.push_back(parseStep(step));
    MadeUpUser user(seed);
    for (std::uint32_t gesture = 0; gesture < madeUpGestures; ++gesture) {
        script.push_back(user.next()); // a pause
        script.push_back(user.next()); // a gesture
    }
    return script;
}

} // namespace VeltoTouch::Surface
