#pragma once

#include "Platform/Value.h"
#include "Recording/PipelineRecording.h"
#include "Tests/Support/Reports.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Bytes as a tale of what happens to a recording. The first byte is the bound, then come steps, each a letter and what
// it needs; where the bytes end, zeros are read, and bytes that are no step are passed over.
//
//   t MM        the host's clock goes on by a signed 16-bit number of milliseconds
//   i N (P SS)* the next image, 10 ms of both clocks later: N mod 16 pairs of a pad and a signed 16-bit signal
//   r N         the last image again N times, each the next frame
//   j FFFF MMMM the device's frame number and clock jump ahead
//   b N ...     a report of these N bytes
//   f E         a firmware event
//   s K V       a setting: a key by its number, see `settingKey`, and a value
//   m TEXT V    metadata: a key and a value
//
//   TEXT: a length mod 16 and that many bytes.  V: a letter and what it needs, see `value`.

namespace VeltoTouch::Fuzz {

class Steps {
public:
    Steps(std::span<const std::uint8_t> bytes, PipelineRecording& recording) : _rest(bytes), _recording(recording) {}

    [[nodiscard]] std::uint64_t takeBound() { return take<std::uint8_t>(); }
    [[nodiscard]] bool isAtEnd() const { return _rest.empty() || _calls > kMostCalls; }

    // Takes the next step, through the recording's calls.
    void step() {
        switch (take<char>()) {
        case 't':
            _timeNs += static_cast<std::uint64_t>(std::int64_t{take<std::int16_t>()} * kMs);
            return;
        case 'i':
            _image.padSignal.fill(0);
            for (int count = take<std::uint8_t>() % 16; count > 0; --count) {
                const std::size_t pad = take<std::uint8_t>() % kPadCount;
                _image.padSignal[pad] = take<std::int16_t>();
            }
            return sendImage();
        case 'r':
            for (int count = take<std::uint8_t>(); count > 0; --count)
                sendImage();
            return;
        case 'j':
            _image.frameNumber += take<std::uint32_t>();
            _image.timestampMs += take<std::uint32_t>();
            return;
        case 'b':
            return send(takeBytes(take<std::uint8_t>()));
        case 'f':
            return send(Tests::firmwareEventReport(take<std::uint8_t>()));
        case 's': {
            const std::string key = settingKey();
            return _recording.setState(_timeNs, key, value());
        }
        case 'm': {
            const std::string key = text();
            return _recording.handleMetadata(_timeNs, key, value());
        }
        default:
            return;
        }
    }

private:
    static constexpr std::int64_t kMs = 1'000'000;
    static constexpr std::uint32_t kFrameMs = 10;
    static constexpr int kDeepest = 4;
    static constexpr int kMostCalls = 1000; // more find nothing new and cost time

    template <class T>
    T take() {
        T number{};
        const std::size_t size = std::min(sizeof number, _rest.size());
        std::memcpy(&number, _rest.data(), size);
        _rest = _rest.subspan(size);
        return number;
    }
    std::vector<std::uint8_t> takeBytes(std::size_t count) {
        const auto bytes = _rest.first(std::min(count, _rest.size()));
        _rest = _rest.subspan(bytes.size());
        return {bytes.begin(), bytes.end()};
    }
    std::string text() {
        const auto bytes = takeBytes(take<std::uint8_t>() % 16);
        return {bytes.begin(), bytes.end()};
    }

    std::string settingKey() {
        static constexpr std::array<std::string_view, 6> kKeys{
            "Algs.EnableHoldSuppression", "Algs.EnableTapSuppression", "Algs.HoldTimeoutMilliseconds",
            "Algs.ActivationThreshold",   "Algs.ResetEventStats",      "DebugInfo"};
        const std::size_t key = take<std::uint8_t>();
        if (key < kKeys.size())
            return std::string(kKeys[key]);
        return (key % 2 == 0 ? "Algs.VirtualNormalizationFactors." : "Algs.") + text();
    }

    Ref<Value> value(int level = 0) {
        switch (take<char>()) {
        case 'n':
            return makeRef<Null>();
        case 'b':
            return Number::withBool(take<std::uint8_t>() % 2 != 0);
        case 'c':
            return Number::withLongLong(take<std::int8_t>());
        case 'i':
            return Number::withLongLong(take<std::int64_t>());
        case 'u':
            return Number::withUnsignedLong(take<std::uint64_t>());
        case 'f':
            return Number::withFloat(take<float>());
        case 'd':
            return Number::withDouble(take<double>());
        case 's':
            return makeRef<String>(text());
        case 'x':
            return makeRef<Data>(text());
        case 'a':
            return makeRef<Array>(values(level));
        case 'o': {
            std::vector<Dictionary::Entry> entries;
            for (Ref<Value>& member : values(level))
                entries.push_back({.key = text(), .value = std::move(member)});
            return makeRef<Dictionary>(std::move(entries));
        }
        default:
            return nullptr;
        }
    }
    std::vector<Ref<Value>> values(int level) {
        std::vector<Ref<Value>> values;
        for (int count = level < kDeepest ? take<std::uint8_t>() % 8 : 0; count > 0; --count) {
            Ref<Value> one = value(level + 1);
            values.push_back(one ? std::move(one) : makeRef<Null>());
        }
        return values;
    }

    void sendImage() {
        _timeNs += std::uint64_t{kFrameMs} * kMs;
        ++_image.frameNumber;
        _image.timestampMs += kFrameMs;
        send(Tests::imageReport(_image));
    }
    void send(const std::vector<std::uint8_t>& report) {
        ++_calls;
        _recording.handleInputReport(_timeNs, report.data(), report.size());
    }

    std::span<const std::uint8_t> _rest;
    PipelineRecording& _recording;
    InputReport::Image _image{};
    std::uint64_t _timeNs = 1'000'000'000;
    int _calls = 0; // of reports
};

} // namespace VeltoTouch::Fuzz
