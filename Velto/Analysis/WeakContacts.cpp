#include "Velto/Analysis/WeakContacts.h"

#include "Plugin/Reports/Regions.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Analysis {
namespace {

constexpr float kReportedShare = 0.5F; // of the level that had to be exceeded

} // namespace

void WeakContacts::frame(const Track::Step& step, const Algs& algs) {
    const HandStats& hand = algs.handStats;
    if (hand.touching) {
        _isAboveNoise = false;
    } else if (hand.aboveNoise) {
        if (!_isAboveNoise)
            begin(step);
        look(algs);
    } else if (_isAboveNoise) {
        end(step.ns, step.image.frameNumber);
    }
    followLowest(algs);
    _lastStep = step;
}

// What a touch leaves falls from its last frame on; a press out of nothing rises from the trough.
void WeakContacts::followLowest(const Algs& algs) {
    const auto follow = [&](auto& lowest, const auto& bank) {
        for (std::size_t i = 0; i < lowest.size(); ++i) {
            if (_isAboveNoise)
                lowest[i] = std::min(lowest[i], bank.normalized[i]);
            else
                lowest[i] = algs.handStats.touching ? bank.normalized[i] : bank.offTrough[i];
        }
    };
    follow(_lowestOfPads, algs.pixels);
    follow(_lowestOfGroups, algs.virtualPixels);
}

void WeakContacts::begin(const Track::Step& step) {
    _isAboveNoise = true;
    _contact = {.number = _contacts.size() + 1, .startNs = step.ns, .startFrame = step.image.frameNumber};
    _reached = 0;
}

// A pixel that rises has the trough that it had before this frame.
void WeakContacts::look(const Algs& algs) {
    const float threshold = algs.handStats.activationThreshold;
    const auto lookAt = [&](const auto& bank, const auto& lowest, std::size_t i, std::string_view name) {
        const float level = Pixel::activationLevel(bank.offTrough[i]);
        const float rise = (bank.normalized[i] - lowest[i]) * threshold;
        const float share = bank.normalized[i] / level;
        if (rise > static_cast<float>(kNoiseFloor) && share >= kReportedShare && share > _reached) {
            _reached = share;
            _contact.check = {.rule = level > 1.0F ? Rule::Residual : Rule::Activation,
                              .value = static_cast<double>(bank.value[i]),
                              .bound = static_cast<double>(level * threshold),
                              .passed = false};
            _contact.peak = {.pixel = name, .value = static_cast<float>(bank.value[i])};
        }
    };
    for (std::size_t i = 0; i < kPadCount; ++i)
        lookAt(algs.pixels, _lowestOfPads, i, letterOf(i));
    for (std::size_t i = 0; i < kGroupCount; ++i)
        lookAt(algs.virtualPixels, _lowestOfGroups, i, algs.virtualPixels.names[i]);
}

void WeakContacts::end(std::uint64_t ns, std::uint32_t frame) {
    _isAboveNoise = false;
    if (_reached == 0.0F)
        return;
    _contact.endNs = ns;
    _contact.endFrame = frame;
    _contacts.push_back(_contact);
}

std::vector<WeakContact> WeakContacts::finish() {
    if (_isAboveNoise)
        end(_lastStep.ns, _lastStep.image.frameNumber);
    return std::exchange(_contacts, {});
}

std::vector<WeakContact> weakContactsOf(const Track& track, const std::vector<Setting>& settings) {
    WeakContacts contacts;
    track.play(settings, [&contacts](const Track::Step& step, const Algs& algs, std::span<const Gesture>) {
        contacts.frame(step, algs);
    });
    return contacts.finish();
}

} // namespace VeltoTouch::Analysis
