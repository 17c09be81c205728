#include "Plugin/Recording/PipelineRecording.h"
#include "Plugin/Shared/Keys.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Analysis/WeakContacts.h"
#include "Velto/Commands/Examination.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Output/TouchText.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using enum Finding::Verdict;
using namespace Analysis;

// What the service has recorded until now. Throws what the bus and the recording's reader throw.
Track recordedBy(Bus::Client& client) {
    const Ref<Value> recording = client.getProperty(std::string(Keys::kRecording));
    const auto* const container = as<String>(recording);
    if (container == nullptr)
        throw std::runtime_error("the service gives no recording");
    return Track(PipelineRecording(makeRef<Data>(container->text()).get()).frames());
}

// Those that ended in the last seconds of a track.
template <class Contacts>
Contacts newest(Contacts contacts, const Track& track, std::chrono::nanoseconds duration) {
    std::erase_if(contacts, [&](const auto& contact) {
        return contact.endNs + static_cast<std::uint64_t>(duration.count()) < track.durationNs();
    });
    return contacts;
}

double shareOf(const WeakContact& contact) { return contact.check.value / contact.check.bound; }

// The next tens below the contact's value, at which it would have turned on.
double thresholdFor(const WeakContact& contact) { return (std::ceil(contact.check.value / 10) - 1) * 10; }

} // namespace

// The keys are pressed before a gesture is signalled.
void Examination::watch() {
    Bus::Client client(_options.served.bus, _device);
    EventLoop loop;
    const auto handle = [&](const Gesture& gesture) {
        _wasTouched = true;
        if (gesture.kind != GestureKind::Tap && gesture.kind != GestureKind::HoldStart)
            return;
        _gesture = gesture;
        loop.stop();
    };
    client.watch(loop, handle, [] { throw std::runtime_error("the service has ended"); });
    loop.run(_options.wait);
}

Finding Examination::touch() {
    if (_options.wait == std::chrono::microseconds(0))
        return {.verdict = Unasked, .text = "no touch was asked for (--wait S)"};
    _keysBefore = counter("keys");
    _options.askForTouch();
    watch();
    return _wasTouched ? Finding{.verdict = Yes, .text = "a touch turned on"} : noTouch();
}

Finding Examination::noTouch() {
    const double seconds = std::chrono::duration<double>(_options.wait).count();
    Finding finding{.verdict = No,
                    .text = fmt::format("no touch turned on in {:g} s", seconds),
                    .advice = "sudo " + commandLine("doctor") + " says how weak the contacts were"};
    try {
        const Track track = recordedBy(*_client);
        const std::vector<WeakContact> contacts = newest(weakContactsOf(track, {}), track, _options.wait);
        const auto strongest = std::ranges::max_element(contacts, {}, shareOf);
        if (strongest != contacts.end()) {
            finding.text = fmt::format("{} contact{} in {:g} s stayed below the activation threshold: {:.0f} of {:.0f}",
                                       contacts.size(), contacts.size() == 1 ? "" : "s", seconds,
                                       strongest->check.value, strongest->check.bound);
            finding.advice = strongest->check.rule == Rule::Residual
                                 ? "press harder, and lift off entirely between two touches"
                                 : fmt::format("press harder, or {} {}={:.0f}", commandLine("set"),
                                               kActivationThreshold, thresholdFor(*strongest));
        } else if (track.imageCount() == 0) {
            finding.text = "reports come, but no images of the pads";
            finding.advice = commandLine("record") + " -o seen.json && velto info seen.json shows what they are";
        } else {
            finding.text = fmt::format("nothing touched the surface in {:g} s", seconds);
            finding.advice = "touch it while velto doctor waits; if you did, " + commandLine("record") +
                             " -o seen.json && velto plot seen.json -o seen.html shows what its pads sense";
        }
    } catch (const std::exception&) { // without the right to the recording
    }
    return finding;
}

Finding Examination::noGesture() {
    Finding finding{.verdict = No,
                    .text = "the touch became no tap and no hold",
                    .advice = "sudo " + commandLine("doctor") + " says why"};
    try {
        const Track track = recordedBy(*_client);
        const std::vector<Touch> touches = newest(touchesOf(track, {}), track, _options.wait);
        if (!touches.empty())
            finding.text += ": " + verdictText(touches.back());
        finding.advice = commandLine("record") + " -o seen.json && velto explain seen.json --rejected";
    } catch (const std::exception&) { // without the right to the recording
    }
    return finding;
}

Finding Examination::gesture() {
    if (_gesture)
        return {.verdict = Yes,
                .text = fmt::format("{} {}", _gesture->kind == GestureKind::Tap ? "tap" : "hold",
                                    nameOf(_gesture->region.value_or(PixelRegion::None)))};
    if (_wasTouched)
        return noGesture();
    const std::uint64_t count = counter("numTaps") + counter("numBeginHold");
    return {.verdict = count > 0 ? Yes : Unasked, .text = fmt::format("taps and holds since the start: {}", count)};
}

} // namespace VeltoTouch::Velto
