#include "Velto/Commands/Examination.h"
#include "Velto/Daemon/ConfigurationEntry.h"
#include "Velto/Daemon/KeyNames.h"
#include "Velto/Daemon/OpenNodes.h"

#include <fmt/format.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

using enum Finding::Verdict;

} // namespace

Finding Examination::keyboard() const {
    if (_keyboard.empty())
        return {.verdict = No, .text = "the service has no keyboard", .advice = "start velto serve without --no-keys"};
    if (::access(_keyboard.c_str(), F_OK) != 0)
        return {.verdict = No,
                .text = fmt::format("the keyboard's node {} is not there", _keyboard),
                .advice = "sudo modprobe evdev; in a container, run velto doctor outside of it"};
    return {.verdict = Yes, .text = _keyboard};
}

// A service on the session's bus is not reached by root.
std::string Examination::howToGiveKey() const {
    const KeyPlace place{.use = _gesture->kind == GestureKind::Tap ? &RegionKeys::tap : &RegionKeys::hold,
                         .region = _gesture->region.value_or(PixelRegion::None)};
    return fmt::format("sudo velto set --keep {}={}{}", fullKeyOf(place), nameOfKey(keyAt(kDefaultKeys, place)),
                       isOnSystemBus() ? "" : "; then end velto serve and start it again");
}

Finding Examination::key() {
    const std::uint64_t keys = counter("keys");
    if (!_gesture)
        return {.verdict = keys > 0 ? Yes : Unasked, .text = fmt::format("keys pressed since the start: {}", keys)};
    if (keys == _keysBefore)
        return {.verdict = No, .text = "the gesture pressed no key", .advice = howToGiveKey()};
    return {.verdict = Yes, .text = fmt::format("keys pressed: {}", keys - _keysBefore)};
}

Finding Examination::readers() const {
    if (::geteuid() != 0)
        return {.verdict = Unasked, .text = "root sees who reads them"};
    std::string text;
    for (const Process& process : processesWithOpen(_keyboard))
        text += fmt::format("{}{} ({})", text.empty() ? "read by " : ", ", process.name, process.number);
    if (text.empty())
        return {.verdict = No,
                .text = fmt::format("nobody reads {}", _keyboard),
                .advice = "log in to a desktop, which reads every keyboard; sudo evtest " + _keyboard +
                          " shows the keys without one"};
    return {.verdict = Yes, .text = text};
}

std::vector<ExaminationStep> examinationSteps() {
    return {
        {"surface", "surface", &Examination::surface},  //
        {"node", "surface", &Examination::node},        //
        {"service", "service", &Examination::service},  //
        {"reports", "reports", &Examination::reports},  //
        {"touch", "gestures", &Examination::touch},     //
        {"gesture", "gestures", &Examination::gesture}, //
        {"keyboard", "keys", &Examination::keyboard},   //
        {"key", "keys", &Examination::key},             //
        {"readers", "keys", &Examination::readers},     //
    };
}

} // namespace VeltoTouch::Velto
