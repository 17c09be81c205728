#pragma once
#include "Tests/Reference/Pipeline.h"
#include <list>
#include <memory>
namespace VeltoTouch::Reference {
struct Frame {
    enum class Type : std::uint32_t { State = 0, InputReport = 1, Metadata = 2 };
    Type type = Type::State;
    std::uint64_t timestampNs = 0;
    std::string key;
    Value value;
    Bytes report;
};

struct Play {
    bool valid = false;
    std::list<Frame>::const_iterator iterator = {}; // the next frame to play
    std::uint64_t startTime = 0;                    // host ticks
    std::optional<std::uint64_t> lastFrameTimeNs = {};
};

struct Recording {
    std::shared_ptr<Pipeline> pipeline; // may be empty
    std::list<Frame> frames;            // oldest first
    std::uint64_t maxFrameCount = 0;    // bound on the frames that are not State; 0 is no bound
    Play play;
    // The caller sets the clock. Sleeps are noted in microseconds and not slept; one of 0 is not noted.
    std::uint32_t numerator = 1, denominator = 1; // nanoseconds are ticks times numerator by denominator
    std::uint64_t hostTime = 0;
    std::vector<std::uint64_t> sleeps;
    Recording() = default;
    Recording(const Recording& other) // takes over no playback and no sleeps
        : pipeline(other.pipeline), frames(other.frames), maxFrameCount(other.maxFrameCount),
          numerator(other.numerator), denominator(other.denominator), hostTime(other.hostTime) {}
    Recording& operator=(const Recording&) = delete;
    // Products wrap, and a zero divisor gives 0.
    std::uint64_t nanoseconds(std::uint64_t t) const { return denominator == 0 ? 0 : t * numerator / denominator; }
    std::uint64_t ticks(std::uint64_t ns) const { return numerator == 0 ? 0 : ns * denominator / numerator; }
    void setState(std::uint64_t timestamp, const std::string& key, const Value& value) {
        record(timestamp, {Frame::Type::State, nanoseconds(timestamp), key, value, {}});
    }
    void handleInputReport(std::uint64_t timestamp, const Bytes& report) {
        record(timestamp, {Frame::Type::InputReport, nanoseconds(timestamp), "", {}, report});
    }
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Value& value) {
        record(timestamp, {Frame::Type::Metadata, nanoseconds(timestamp), key, value, {}});
    }
    void record(std::uint64_t timestamp, const Frame& frame) {
        appendFrame(frame);
        deliver(timestamp, frame);
    }
    void deliver(std::uint64_t timestamp, const Frame& frame) {
        if (pipeline && frame.type == Frame::Type::State)
            pipeline->setState(timestamp, frame.key, frame.value);
        if (pipeline && frame.type == Frame::Type::InputReport)
            pipeline->handleInputReport(timestamp, frame.report);
        if (pipeline && frame.type == Frame::Type::Metadata)
            pipeline->handleMetadata(timestamp, frame.key, frame.value);
    }
    void appendFrame(const Frame& frame) {
        frames.push_back(frame);
        if (maxFrameCount != 0 && frames.size() / 2 >= maxFrameCount)
            trimFrames(frames, maxFrameCount);
        play.valid = false;
    }
    static void trimFrames(std::list<Frame>& list, std::uint64_t maximum) {
        std::uint64_t kept = 0;
        std::set<std::string> keys;
        auto position = list.end();
        while (position != list.begin()) {
            --position;
            const bool state = position->type == Frame::Type::State;
            const bool keep = state ? keys.insert(position->key).second : kept < maximum; // second: the key is new
            if (!state && keep) {
                ++kept;
                keys.clear();
            }
            if (!keep)
                position = list.erase(position);
        }
    }
    static void sortFrames(std::list<Frame>& list) { // stable; moves no frame in memory
        list.sort([](const Frame& a, const Frame& b) { return a.timestampNs < b.timestampNs; });
    }
    void setMaxFrameCount(std::uint64_t count) {
        maxFrameCount = count;
        if (maxFrameCount == 0)
            return;
        const Frame* const next = playCanContinue() ? &*play.iterator : nullptr;
        bool found = next == nullptr;
        trimFrames(frames, maxFrameCount);
        for (const Frame& frame : frames)
            found = found || &frame == next;
        play.valid = play.valid && found; // ends when the next frame to play is gone
    }
    void playReset() { play = {true, frames.begin(), hostTime, std::nullopt}; }
    bool playCanContinue() const { return play.valid && play.iterator != frames.end(); }
    void playNextFrame(float speed) {
        if (!playCanContinue())
            throw std::runtime_error("playback finished");
        const Frame& frame = *play.iterator;
        ++play.iterator;
        if (play.lastFrameTimeNs && frame.timestampNs > *play.lastFrameTimeNs) {
            const float gap = float(frame.timestampNs - *play.lastFrameTimeNs);
            const float micros = gap / (speed > 0.0f ? speed : 1.0f) / 1000.0f;
            const std::uint64_t whole = micros < 18446744073709551616.0f ? std::uint64_t(micros) : UINT64_MAX;
            if (whole != 0)
                sleeps.push_back(whole);
        }
        play.lastFrameTimeNs = frame.timestampNs;
        deliver(play.startTime + ticks(frame.timestampNs - frames.front().timestampNs), frame);
    }
};
} // namespace VeltoTouch::Reference
