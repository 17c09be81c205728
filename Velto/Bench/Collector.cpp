#include "Velto/Bench/Collector.h"

#include "Velto/Analysis/Spoiled.h"
#include "Velto/Surface/SimulatedRecording.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Bench {
namespace {

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
    else if (_phase == Phase::Ask && elapsed >= _askNs && !_attempt->contact.isInProgress())
        judge();
    const auto image = InputReport::Image::parse(report.report.data(), report.report.size());
    if (image)
        _newestImageMs = image->timestampMs;
    if (_phase != Phase::Ask)
        return;
    const auto event = InputReport::FirmwareEvent::parse(report.report.data(), report.report.size());
    if (event && event->isReset())
        _attempt->contact.reset();
    if (image)
        _attempt->contact.add(_nowNs, *image);
}

void Collector::press(char key) {
    const bool isOfAnAttempt = _attempt && _phase != Phase::Ask && _phase != Phase::End;
    if (key == static_cast<char>(Key::Quit))
        return finish();
    if (!isOfAnAttempt)
        return;
    if (key == static_cast<char>(Key::Next) || key == static_cast<char>(Key::Spoiled)) {
        key == static_cast<char>(Key::Next) ? accept() : spoil(_fault.empty() ? "taken back" : _fault);
        enter(Phase::Pause);
    } else if (key == static_cast<char>(Key::Repeat)) {
        _current = _attempt->number;
        spoil(_fault.empty() ? "taken back" : _fault);
        enter(Phase::Pause);
    }
}

void Collector::finish() {
    if (_phase == Phase::End)
        return;
    if (_attempt && _phase == Phase::Pause)
        accept();
    else if (_attempt)
        spoil(_phase == Phase::Ask ? "not finished" : _fault);
    enter(Phase::End);
}

double Collector::secondsLeft() const noexcept {
    const std::uint64_t length = _phase == Phase::Pause ? _pauseNs : _phase == Phase::Ask ? _askNs : 0;
    const std::uint64_t elapsed = _nowNs - _phaseStartNs.value_or(_nowNs);
    return static_cast<double>(length - std::min(elapsed, length)) / 1e9;
}

void Collector::enter(Phase phase) {
    _phase = phase;
    _phaseStartNs = _nowNs;
    _handlers.change();
}

void Collector::ask() {
    if (_attempt)
        accept();
    if (_current == _asked.size())
        return enter(Phase::End);
    _fault.clear();
    _attempt.emplace(Attempt{.number = _current, .contact = RawContact({.ns = _nowNs, .deviceMs = _newestImageMs})});
    enter(Phase::Ask);
}

void Collector::judge() {
    _fault = _attempt->contact.faultAs(_asked[_attempt->number]);
    ++_current;
    enter(_fault.empty() ? Phase::Pause : Phase::Decide);
}

void Collector::accept() {
    write(_attempt->contact.start(), _attempt->contact.end(), {});
    ++_labelled;
    _attempt.reset();
}

void Collector::spoil(const std::string& reason) {
    const Surface::Step& step = _asked[_attempt->number];
    write(_attempt->contact.first(), _attempt->contact.newest(),
          {textMember("gesture", Analysis::kSpoiled), textMember("asked", nameOf(step.action)),
           textMember("reason", reason)});
    ++_spoiled;
    _attempt.reset();
}

// `more`: members that take the place of those of a label of the gesture.
void Collector::write(const RawContact::Moment& start, const RawContact::Moment& end,
                      std::vector<Dictionary::Entry> more) {
    const Ref<Value> label = Surface::labelValue(labelOf(_asked[_attempt->number], start.deviceMs, end.deviceMs));
    const auto members = as<Dictionary>(label)->entries();
    more.insert(more.begin(), members.begin(), members.end());
    _handlers.label({.type = Frame::Type::Metadata,
                     .timestampNs = start.ns,
                     .key = std::string(Surface::kLabelKey),
                     .value = makeRef<Dictionary>(std::move(more)),
                     .report = {}});
}

} // namespace VeltoTouch::Bench
