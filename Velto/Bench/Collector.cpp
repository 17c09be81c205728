#include "Velto/Bench/Collector.h"

#include "Plugin/Reports/Regions.h"
#include "Velto/Analysis/Spoiled.h"
#include "Velto/Surface/SimulatedRecording.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Bench {
namespace {

// After a contact: the second of two quick taps begins within it. It is what desktops wait for a double click.
constexpr std::uint64_t kQuietNs = 500'000'000;
// How long beyond the time for it a contact may last: longer than any hold that is asked of a person.
constexpr std::uint64_t kLongestOverrunNs = 10'000'000'000;

Dictionary::Entry textMember(const char* key, std::string_view text) {
    return {.key = key, .value = makeRef<String>(std::string(text))};
}

} // namespace

Collector::Collector(std::vector<Surface::Step> asked, std::uint64_t pauseNs, std::uint64_t askNs, Handlers handlers)
    : _asked(std::move(asked)), _pauseNs(pauseNs), _askNs(askNs), _handlers(std::move(handlers)) {}

void Collector::report(const Frame& report) {
    if (_phase == Phase::End)
        return;
    _nowNs = std::max(_nowNs, report.timestampNs); // a piped device may say anything
    if (!_phaseStartNs)
        _phaseStartNs = _nowNs;
    const std::uint64_t elapsed = _nowNs - *_phaseStartNs;
    if (_phase == Phase::Pause && elapsed >= _pauseNs)
        ask();
    else if (_phase == Phase::Ask && elapsed >= attemptNs())
        judge();
    const auto image = InputReport::Image::parse(report.report.data(), report.report.size());
    if (image)
        _newestImageMs = image->timestampMs;
    RawContacts& contacts = _phase == Phase::Ask ? _attempt->contacts : _unasked;
    const auto event = InputReport::FirmwareEvent::parse(report.report.data(), report.report.size());
    if (event && event->isReset())
        contacts.reset();
    if (image)
        contacts.add(_nowNs, *image);
}

void Collector::press(char key) {
    const auto pressed = static_cast<Key>(key);
    if (pressed == Key::Quit)
        return finish();
    const bool isOfAnAttempt = _attempt && _phase != Phase::Ask && _phase != Phase::End;
    const bool takesBack = pressed == Key::Repeat || pressed == Key::Spoiled;
    if (!isOfAnAttempt || !(takesBack || pressed == Key::Next))
        return;
    if (pressed == Key::Repeat)
        _current = _attempt->number;
    takesBack ? spoil(_fault.empty() ? "taken back" : _fault) : accept();
    enter(Phase::Pause);
}

void Collector::finish() {
    if (_phase == Phase::End)
        return;
    if (_attempt && _phase == Phase::Pause)
        accept();
    else if (_attempt)
        spoil(_phase == Phase::Ask ? "not finished" : _fault);
    writeUnasked();
    enter(Phase::End);
}

double Collector::secondsLeft() const noexcept {
    const std::uint64_t length = _phase == Phase::Pause ? _pauseNs : _phase == Phase::Ask ? _askNs : 0;
    const std::uint64_t elapsed = _nowNs - _phaseStartNs.value_or(_nowNs);
    return static_cast<double>(length - std::min(elapsed, length)) / 1e9;
}

// How long the attempt takes, as far as it is known by now.
std::uint64_t Collector::attemptNs() const noexcept {
    const RawContacts& contacts = _attempt->contacts;
    if (contacts.isInProgress())
        return _askNs + kLongestOverrunNs;
    const auto contactEndNs = contacts.endNs();
    return contactEndNs ? std::min(_askNs, *contactEndNs - *_phaseStartNs + kQuietNs) : _askNs;
}

void Collector::enter(Phase phase) {
    _phase = phase;
    _phaseStartNs = _nowNs;
    _handlers.change();
}

void Collector::ask() {
    if (_attempt)
        accept();
    writeUnasked();
    if (_current == _asked.size())
        return enter(Phase::End);
    _fault.clear();
    _attempt.emplace(Attempt{.number = _current, .contacts = RawContacts({.ns = _nowNs, .deviceMs = _newestImageMs})});
    enter(Phase::Ask);
}

void Collector::judge() {
    _fault = _attempt->contacts.faultAs(_asked[_attempt->number]);
    ++_current;
    enter(_fault.empty() ? Phase::Pause : Phase::Decide);
}

void Collector::accept() {
    const auto spans = _attempt->contacts.spansAs(_asked[_attempt->number]);
    write(spans.front(), labelOfAttempt(spans.front()), {});
    std::for_each(spans.begin() + 1, spans.end(), [this](const auto& span) { writeSpoiled(span, "another contact"); });
    ++_labelled;
    _attempt.reset();
}

void Collector::spoil(const std::string& reason) {
    writeSpoiled(_attempt->contacts.allImages(), reason);
    ++_spoiled;
    _attempt.reset();
}

Surface::Simulation::Label Collector::labelOfAttempt(const RawContacts::Span& span) const {
    return labelOf(_asked[_attempt->number], span.start.deviceMs, span.end.deviceMs);
}

void Collector::writeSpoiled(const RawContacts::Span& span, std::string_view reason) {
    Surface::Simulation::Label label = labelOfAttempt(span);
    const std::string_view asked = std::exchange(label.gesture, Analysis::kSpoiled);
    write(span, label, {textMember("asked", asked), textMember("reason", reason)});
}

void Collector::writeUnasked() {
    for (const RawContacts::Span& span : std::exchange(_unasked, RawContacts({})).spans())
        write(span,
              {.gesture = Analysis::kSpoiled,
               .region = nameOf(PixelRegion::None),
               .startMs = span.start.deviceMs,
               .endMs = span.end.deviceMs},
              {textMember("reason", "not asked for")});
}

void Collector::write(const RawContacts::Span& span, const Surface::Simulation::Label& label,
                      const std::vector<Dictionary::Entry>& more) {
    const Ref<Value> value = Surface::labelValue(label);
    const auto entries = as<Dictionary>(value)->entries();
    std::vector<Dictionary::Entry> members(entries.begin(), entries.end());
    members.insert(members.end(), more.begin(), more.end());
    _handlers.label({.type = Frame::Type::Metadata,
                     .timestampNs = span.start.ns,
                     .key = std::string(Surface::kLabelKey),
                     .value = makeRef<Dictionary>(std::move(members)),
                     .report = {}});
}

} // namespace VeltoTouch::Bench
