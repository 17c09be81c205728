#pragma once

#include "Platform/JSON.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Plugin/Shared/HexText.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Frames that a test can write and read: a setting k=1, metadata k:1, a report [01 ff], each followed by its
// time, @5. JSON's null reads k=null, nil k=.

namespace VeltoTouch::Tests {

inline Ref<Value> json(std::string_view text) { return JSON::parse(text); }

inline Frame setting(const std::string& key, const Ref<Value>& value, std::uint64_t timeNs = 0) {
    return {.type = Frame::Type::State, .timestampNs = timeNs, .key = key, .value = value, .report = {}};
}
inline Frame metadata(const std::string& key, const Ref<Value>& value, std::uint64_t timeNs = 0) {
    return {.type = Frame::Type::Metadata, .timestampNs = timeNs, .key = key, .value = value, .report = {}};
}
inline Frame reportFrame(const std::vector<std::uint8_t>& report, std::uint64_t timeNs = 0) {
    return {.type = Frame::Type::InputReport, .timestampNs = timeNs, .key = {}, .value = {}, .report = report};
}

inline std::string textOf(const Frame& frame) {
    std::string text = frame.key;
    if (frame.type == Frame::Type::InputReport) {
        text.append("[").append(Util::hexStringFromBytes(frame.report));
        if (text.back() == ' ')
            text.pop_back();
        text += "]";
    } else {
        text += frame.type == Frame::Type::State ? "=" : ":";
    }
    if (frame.value)
        text += JSON::text(frame.value.get());
    return text.append("@").append(std::to_string(frame.timestampNs));
}

template <class Frames>
std::vector<std::string> textsOf(const Frames& frames) {
    std::vector<std::string> texts;
    for (const Frame& frame : frames)
        texts.push_back(textOf(frame));
    return texts;
}

// The same container with a further member, which sends it another way through the reader: what is usual is scanned,
// all else is parsed.
inline std::string withFurtherMember(std::string text) { return text.insert(1, R"("Further":0,)"); }

inline PipelineRecording recordingFrom(std::string_view text) {
    return PipelineRecording(makeRef<Data>(std::string(text)).get());
}

// A pipeline that keeps what it is told, as frames whose time is the timestamp that it was given.
class CallLog final : public PipelineInput {
public:
    std::vector<Frame> calls;
    std::function<void()> whenCalled = [] { return; }; // before the call is kept

    void setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) override {
        whenCalled();
        calls.push_back(setting(key, value, timestamp));
    }
    void handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) override {
        whenCalled();
        calls.push_back(reportFrame({report, report + length}, timestamp));
    }
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) override {
        whenCalled();
        calls.push_back(metadata(key, value, timestamp));
    }
};

} // namespace VeltoTouch::Tests
