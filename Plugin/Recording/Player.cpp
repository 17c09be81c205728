#include "Plugin/Recording/Player.h"

#include "Platform/Clock.h"
#include "Plugin/Shared/ClockConversion.h"

#include <stdexcept>

namespace VeltoTouch {
namespace {

void handOver(const Frame& frame, std::uint64_t timestamp, PipelineInput& target) {
    switch (frame.type) {
    case Frame::Type::State:
        target.setState(timestamp, frame.key, frame.value);
        break;
    case Frame::Type::InputReport:
        target.handleInputReport(timestamp, frame.report.data(), frame.report.size());
        break;
    case Frame::Type::Metadata:
        target.handleMetadata(timestamp, frame.key, frame.value);
        break;
    }
}

} // namespace

// Self-assignment clears the position too: the owner's list is replaced in that case as well.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
Player& Player::operator=(const Player& /*other*/) noexcept {
    clear();
    return *this;
}

Player& Player::operator=(Player&& other) noexcept {
    clear();
    other.clear();
    return *this;
}

void Player::clear() noexcept {
    stop();
    _startTimeMach = 0;
    _lastFrameTimeNs.reset();
}

void Player::start(const std::list<Frame>& frames) noexcept {
    _frames = &frames;
    _next = frames.begin();
    _startTimeMach = mach_absolute_time();
    _lastFrameTimeNs.reset();
}

const Frame* Player::next() const noexcept { return _frames != nullptr && _next != _frames->end() ? &*_next : nullptr; }

std::uint64_t Player::pauseUs(std::uint64_t fromNs, std::uint64_t toNs, float speed) noexcept {
    if (toNs <= fromNs)
        return 0;
    const float divisor = speed > 0.0F ? speed : 1.0F;
    return unsignedReading(static_cast<double>(static_cast<float>(toNs - fromNs) / divisor / 1000.0F));
}

void Player::playNext(float speed, PipelineInput* target) {
    const Frame* const frame = next();
    if (frame == nullptr)
        throw std::runtime_error("playback finished");
    ++_next;
    if (_lastFrameTimeNs) {
        if (const auto pause = pauseUs(*_lastFrameTimeNs, frame->timestampNs, speed); pause > 0)
            usleep(pause);
    }
    _lastFrameTimeNs = frame->timestampNs;
    if (target == nullptr)
        return;
    const std::uint64_t sinceFirstNs = frame->timestampNs - _frames->front().timestampNs; // wraps for an earlier one
    handOver(*frame, _startTimeMach + Util::machTimeFromNanoseconds(sinceFirstNs), *target);
}

void Player::play(const Frame& frame, PipelineInput& target) {
    handOver(frame, Util::machTimeFromNanoseconds(frame.timestampNs), target);
}

} // namespace VeltoTouch
