#include "Velto/Analysis/WouldBe.h"

#include "Platform/JSON.h"
#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/TouchObserver.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Analysis {
namespace {

constexpr double kThresholdStep = 1.02;
constexpr int kThresholdSteps = 35; // to half and double

// What a touch became in another play; none if no touch is left there.
using Found = std::optional<Outcome>;

// Plays with one setting changed, and remembers.
class Plays {
public:
    Plays(const Track& track, const std::vector<Setting>& settings) : _track(track), _settings(settings) {}

    Found outcomeOf(const Touch& touch, const Setting& changed) {
        const auto [play, isNew] = _plays.try_emplace({changed.key, JSON::text(changed.value.get())});
        if (isNew)
            play->second = touchesWith(changed);
        const Touch* const same = touchThatOverlapsMost(play->second, touch.startNs, touch.endNs);
        return same == nullptr ? Found() : Found(same->outcome);
    }

private:
    [[nodiscard]] std::vector<Touch> touchesWith(const Setting& changed) const {
        std::vector<Setting> settings = _settings;
        std::erase_if(settings, [&changed](const Setting& setting) { return setting.key == changed.key; });
        settings.push_back(changed);
        return touchesOf(_track, settings);
    }

    const Track& _track;
    const std::vector<Setting>& _settings;
    std::map<std::pair<std::string, std::string>, std::vector<Touch>> _plays; // by key and value
};

// Time-outs at which something changes for a touch, the nearest first: the last touching frame times out or does not,
// and so does the last one that could make a hold.
std::vector<Setting> timeoutsFor(const Touch& touch) {
    const auto fork = std::ranges::find(touch.checks, Rule::HoldTimeout, &Check::rule);
    if (fork == touch.checks.end())
        return {};
    std::set<std::int64_t> times;
    const auto addAround = [&times](std::int64_t elapsed) {
        times.insert(elapsed);
        times.insert(elapsed - 1);
    };
    addAround(static_cast<std::int64_t>(fork->value));
    if (touch.latestHoldMs)
        addAround(*touch.latestHoldMs);
    const std::int64_t present = touch.inForce.holdTimeoutMs;
    times.erase(-1);
    times.erase(present);
    std::vector<std::int64_t> nearest(times.begin(), times.end());
    std::ranges::stable_sort(nearest, {}, [present](std::int64_t time) { return std::abs(time - present); });
    std::vector<Setting> settings;
    for (const std::int64_t time : nearest)
        settings.push_back({.key = std::string(kHoldTimeout), .value = Number::withLongLong(time)});
    return settings;
}

// Thresholds from the nearest to half and double.
std::vector<Setting> thresholdsFor(const Touch& touch) {
    const auto present = static_cast<double>(touch.inForce.activationThreshold);
    if (!std::isfinite(present) || present <= 0.0)
        return {};
    std::vector<Setting> settings;
    for (int step = 1; step <= kThresholdSteps; ++step) {
        for (const int direction : {-1, 1}) {
            const double threshold = present * std::pow(kThresholdStep, direction * step);
            settings.push_back(
                {.key = std::string(kActivationThreshold), .value = JSON::parse(fmt::format("{:.3g}", threshold))});
        }
    }
    return settings;
}

std::vector<Setting> switched(std::string_view key, bool present) {
    return {{.key = std::string(key), .value = Number::withBool(!present)}};
}

// Adds the first of the settings that gives another outcome. Returns a setting that leaves no touch if one was tried.
std::optional<Setting> tryInOrder(Plays& plays, Touch& touch, const std::vector<Setting>& settings) {
    std::optional<Setting> without;
    for (const Setting& setting : settings) {
        const Found found = plays.outcomeOf(touch, setting);
        if (!found && !without)
            without = setting;
        if (!found || *found == touch.outcome || *found == Outcome::Unfinished)
            continue;
        touch.wouldBe.push_back({.setting = setting, .outcome = found});
        return std::nullopt;
    }
    return without;
}

} // namespace

void findAlternatives(const Track& track, const std::vector<Setting>& settings, const std::vector<Touch*>& touches) {
    Plays plays(track, settings);
    for (Touch* const touch : touches) {
        if (touch->outcome == Outcome::Unfinished)
            continue;
        std::vector<Setting> without;
        for (const std::vector<Setting>& candidates :
             {timeoutsFor(*touch), thresholdsFor(*touch),
              switched(kHoldSuppression, touch->inForce.enableHoldSuppression),
              switched(kTapSuppression, touch->inForce.enableTapSuppression)}) {
            if (auto setting = tryInOrder(plays, *touch, candidates))
                without.push_back(*std::move(setting));
        }
        if (touch->wouldBe.empty()) {
            for (Setting& setting : without)
                touch->wouldBe.push_back({.setting = std::move(setting), .outcome = {}});
        }
    }
}

} // namespace VeltoTouch::Analysis
