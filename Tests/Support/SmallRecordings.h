#pragma once

#include "Platform/JSON.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Tests/Support/Reports.h"

#include <sstream>
#include <string>
#include <vector>

// Recordings of a few frames, made in the order in which they are told, and what the program says of them.

namespace VeltoTouch::Tests {

class SmallRecording {
public:
    static constexpr std::uint32_t kFrameMs = 10;

    SmallRecording& set(const std::string& key, std::string_view value) {
        _recording.setState(_timeNs, key, JSON::parse(value));
        return *this;
    }
    SmallRecording& tell(const std::string& key, std::string_view value) {
        _recording.handleMetadata(_timeNs, key, JSON::parse(value));
        return *this;
    }
    SmallRecording& send(const Report& report) {
        _recording.handleInputReport(_timeNs, report.data(), report.size());
        return *this;
    }
    // An image every 10 ms, the next one 10 ms from here.
    SmallRecording& images(std::uint32_t count, PadSignals signals) {
        for (; count != 0; --count) {
            InputReport::Image image = makeImage(_nextFrame++, _timeMs, signals);
            image.padRaw.fill(static_cast<std::uint16_t>(30'000 + image.frameNumber));
            send(imageReport(image));
            _timeMs += kFrameMs;
            _timeNs += std::uint64_t{kFrameMs} * 1'000'000;
        }
        return *this;
    }
    // A finger that would be a tap.
    SmallRecording& touchForMs(std::uint32_t milliseconds) {
        return images(1, {}).images(milliseconds / kFrameMs, {{'E', 150}, {'F', 60}, {'K', 40}}).images(1, {});
    }
    SmallRecording& loseFrames(std::uint32_t count) {
        _nextFrame += count;
        return *this;
    }
    [[nodiscard]] const std::list<Frame>& frames() const { return _recording.frames(); }
    [[nodiscard]] std::string text() const { return std::string(PipelineRecording(_recording).json()->bytes()); }

private:
    PipelineRecording _recording;
    std::uint32_t _timeMs = 1000;
    std::uint64_t _timeNs = 1'000'000'000;
    std::uint32_t _nextFrame = 0;
};

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// The members with this key, as JSON, of every line that has one.
inline std::vector<std::string> membersOf(const std::string& lines, std::string_view key) {
    std::vector<std::string> members;
    for (const std::string& line : linesOf(lines)) {
        const Ref<Value> object = JSON::parse(line);
        const auto* dictionary = as<Dictionary>(object);
        if (const Value* member = dictionary != nullptr ? dictionary->find(key) : nullptr)
            members.push_back(JSON::text(member));
    }
    return members;
}

} // namespace VeltoTouch::Tests
