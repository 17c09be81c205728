#include "Velto/Bench/TroubleWatch.h"

#include "Velto/Host/Gesture.h"

namespace VeltoTouch::Bench {
namespace {

Trouble troubleOf(Disturbance::Kind kind) noexcept {
    using Kind = Disturbance::Kind;
    switch (kind) {
    case Kind::Gap:
        return Trouble::Gap;
    case Kind::Reset:
        return Trouble::Reset;
    case Kind::InvalidReport:
        break;
    }
    return Trouble::Invalid;
}

} // namespace

void TroubleWatch::handle(const Frame& frame) {
    _ended.reset();
    const LiveRecognition::Seen& seen = _recognition.handle(frame);
    if (seen.disturbance)
        add(troubleOf(*seen.disturbance));
    for (const Gesture& gesture : seen.gestures) {
        if (gesture.kind == GestureKind::Cancel)
            add(Trouble::Cancel);
    }
    if (seen.step)
        _observer.frame(*seen.step, _recognition.algs(), seen.gestures);
    for (Analysis::Touch& touch : _observer.takeEnded())
        _ended = std::move(touch);
}

void TroubleWatch::add(Trouble trouble) {
    ++_counts[static_cast<std::size_t>(trouble)];
    _troubleHandler(trouble);
}

} // namespace VeltoTouch::Bench
