#pragma once

#include "Plugin/Pipeline/Pipeline.h"
#include "Tests/Support/EventMatchers.h"
#include "Tests/Support/Reports.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {

// A touch surface in front of a real pipeline, told what fingers do to it; a frame every 10 ms, numbered from 0.
// surface.at(1000).idle().press({{'E', 150}, {'F', 60}}).forMs(80).lift() sends an idle frame at 1000 ms, eight
// frames with fingers on the pads from 1010 ms on and a frame without at 1090 ms.
class TouchSurface {
public:
    static constexpr std::uint32_t kFrameMs = 10;

    TouchSurface() {
        pipeline.hidEventsHandler = [this](std::uint64_t, const HIDEvents& batch) {
            _events.insert(_events.end(), batch.begin(), batch.end());
        };
    }
    TouchSurface(const TouchSurface&) = delete;

    // The device time of the next frame.
    TouchSurface& at(std::uint32_t timeMs) {
        _timeMs = timeMs;
        return *this;
    }

    // Puts fingers down in place of those that are; the next frames see them.
    TouchSurface& press(PadSignals signals) {
        _contacts = makeImage(0, 0, signals).padSignal;
        return *this;
    }

    // An ordinary finger in a region: a short contact is a tap, a long one a hold.
    TouchSurface& finger(PixelRegion region) {
        if (region == VolumeUp)
            return press({{'G', 250}, {'H', 100}, {'I', 60}});
        if (region == VolumeDown)
            return press({{'L', 200}});
        return press({{'E', 150}, {'F', 60}, {'K', 40}});
    }

    // A contact so weak that it never becomes a hold; up to 300 ms it is a tap, from 400 ms on none.
    TouchSurface& brush(PixelRegion region) {
        if (region == VolumeUp)
            return press({{'H', 203}});
        return region == VolumeDown ? press({{'O', 194}}) : press({{'E', 106}});
    }

    // Frames with the fingers as they are; at least one makes a contact.
    TouchSurface& forMs(std::uint32_t milliseconds) { return forFrames(milliseconds / kFrameMs); }
    TouchSurface& forFrames(std::uint32_t count) {
        for (; count != 0; --count)
            sendFrame();
        return *this;
    }

    // A frame without fingers.
    TouchSurface& idle() { return press({}).forFrames(1); }
    TouchSurface& lift() { return idle(); }

    // The firmware restarts; fingers, clock and frame numbers stay.
    TouchSurface& reset() { return send(firmwareEventReport(InputReport::FirmwareEvent::kReset)); }

    // Sends a report as it is.
    TouchSurface& send(const Report& report) {
        _hostTime += std::uint64_t{kFrameMs} * 1'000'000;
        pipeline.handleInputReport(_hostTime, report.data(), report.size());
        return *this;
    }

    // Writes and reads a setting of the recognizer.
    TouchSurface& set(const std::string& key, const Ref<Value>& value) {
        pipeline.setState(_hostTime, "Algs." + key, value);
        return *this;
    }
    TouchSurface& set(const std::string& key, Number::Content number) { return set(key, makeRef<Number>(number)); }
    [[nodiscard]] Ref<Value> get(const std::string& key) { return pipeline.getState("Algs." + key); }

    // The events so far, oldest first.
    [[nodiscard]] const HIDEvents& events() const { return _events; }

    Pipeline pipeline;
    HandStats& hand = pipeline.algs.handStats;

private:
    void sendFrame() {
        InputReport::Image image = makeImage(_nextFrame++, _timeMs, {});
        image.padSignal = _contacts;
        _timeMs += kFrameMs;
        send(imageReport(image));
    }

    std::array<std::int16_t, kPadCount> _contacts{};
    std::uint32_t _timeMs = 0;
    std::uint32_t _nextFrame = 0;
    std::uint64_t _hostTime = 0;
    HIDEvents _events;
};

class TouchTest : public ::testing::Test {
protected:
    TouchSurface surface;
};

} // namespace VeltoTouch::Tests
