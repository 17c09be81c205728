#pragma once

#include "Pipeline/PipelineInterfaces.h"
#include "Platform/JSON.h"
#include "Recording/Frame.h"
#include "Shared/Util.h"

#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <vector>

// Frames that a test can write and read: a setting k=1, metadata k:1, a report [01 ff], each followed by its
// time, @5. JSON's null reads k=null, nil k=.

namespace VeltoTouch::Tests {

inline Ref<Value> json(std::string_view text) { return JSON::parse(text); }

inline Frame setting(std::string key, Ref<Value> value, std::uint64_t timeNs = 0) {
    return {.type = Frame::Type::State,
            .timestampNs = timeNs,
            .key = std::move(key),
            .value = std::move(value),
            .report = {}};
}

inline Frame metadata(std::string key, Ref<Value> value, std::uint64_t timeNs = 0) {
    Frame frame = setting(std::move(key), std::move(value), timeNs);
    frame.type = Frame::Type::Metadata;
    return frame;
}

inline Frame reportFrame(std::vector<std::uint8_t> report, std::uint64_t timeNs = 0) {
    Frame frame;
    frame.type = Frame::Type::InputReport;
    frame.timestampNs = timeNs;
    frame.report = std::move(report);
    return frame;
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

// A pipeline that keeps what it is told, as frames whose time is the timestamp that it was given.
class CallLog final : public PipelineInput {
public:
    std::vector<Frame> calls;
    const std::uint8_t* lastReport = nullptr; // as it was handed over
    std::function<void()> whenCalled;         // before the call is kept

    void setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) override {
        keep(setting(key, value, timestamp));
    }
    void handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) override {
        lastReport = report;
        keep(reportFrame({report, report + length}, timestamp));
    }
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) override {
        keep(metadata(key, value, timestamp));
    }

private:
    void keep(Frame frame) {
        if (whenCalled)
            whenCalled();
        calls.push_back(std::move(frame));
    }
};

} // namespace VeltoTouch::Tests
