#pragma once
#include "Tests/Reference/Recognizer.h"
#include <functional>
#include <set>
namespace VeltoTouch::Reference {
// What a callback finds in its pipeline: the same template reads this one and the one under test.
template <class AnyPipeline>
std::vector<std::uint64_t> stateOf(const AnyPipeline& pipeline) {
    const auto& hand = pipeline.algs.handStats;
    return {pipeline.lastFrameNumber,
            pipeline.hasLastFrame,
            pipeline.resetCount,
            pipeline.disjointImageCount,
            pipeline.algs.lastEventPhase,
            hand.touching,
            hand.holding,
            hand.holdTimeoutMs,
            hand.activationThreshold == 200.0f,
            hand.enableHoldSuppression,
            hand.enableTapSuppression};
}
// One call of a callback: its name, and those of the arguments that it has.
struct Call {
    std::string name = {};
    std::uint64_t timestamp = 0;
    std::string key = {};
    Value value = {};
    Bytes report = {};
    FirmwareEvent firmwareEvent = {};
    std::uint32_t previousFrame = 0;
    Image image = {};
    std::vector<Event> events = {};
    std::vector<std::uint64_t> state = {};
};

struct Pipeline {
    // Names of the installed callbacks: those of the calls made below.
    std::set<std::string> callbacks;
    std::vector<Call> calls;
    std::function<void(const std::string& name)> whenCalled; // may change the pipeline
    std::uint32_t lastFrameNumber = 0;
    bool hasLastFrame = false;
    std::uint32_t resetCount = 0, disjointImageCount = 0;
    Recognizer algs;
    void call(const Call& made) {
        if (callbacks.count(made.name) == 0)
            return;
        calls.push_back(made);
        calls.back().state = stateOf(*this);
        if (whenCalled)
            whenCalled(made.name);
    }
    void setState(std::uint64_t timestamp, const std::string& key, const Value& value) {
        call({.name = "setStateObserver", .timestamp = timestamp, .key = key, .value = value});
        std::string rest = key;
        if (stripDomainFromKey(rest, "Algs"))
            algs.setState(rest, value);
    }
    void handleInputReport(std::uint64_t timestamp, const Bytes& report) {
        call({.name = "inputReportObserver", .timestamp = timestamp, .report = report});
        const std::optional<FirmwareEvent> firmwareEvent = FirmwareEvent::parse(report);
        const std::optional<Image> image = Image::parse(report);
        if (firmwareEvent) {
            call({.name = "firmwareEventHandler", .timestamp = timestamp, .firmwareEvent = *firmwareEvent});
            if (firmwareEvent->event == 0)
                handleFirmwareReset(timestamp);
        } else if (image) {
            handleImage(timestamp, *image);
        } else {
            call({.name = "invalidReportHandler", .timestamp = timestamp, .report = report});
        }
    }
    void handleFirmwareReset(std::uint64_t timestamp) {
        ++resetCount;
        std::vector<Event> events = algs.handleReset();
        events.push_back({.kind = Event::Kind::Vendor, .usagePage = 0xFF60, .usage = 2});
        handleHIDEvents(timestamp, events);
    }
    void handleImage(std::uint64_t timestamp, const Image& image) {
        call({.name = "imageHandler", .timestamp = timestamp, .image = image});
        if (hasLastFrame && image.frameNumber != lastFrameNumber + 1u) {
            ++disjointImageCount;
            const std::uint32_t last = lastFrameNumber;
            call({.name = "disjointImageHandler", .timestamp = timestamp, .previousFrame = last, .image = image});
        }
        hasLastFrame = true;
        lastFrameNumber = image.frameNumber;
        std::vector<Event> events = algs.handleImage(image);
        handleHIDEvents(timestamp, events);
    }
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Value& value) {
        call({.name = "metadataHandler", .timestamp = timestamp, .key = key, .value = value});
    }
    Value getState(const std::string& key) {
        call({.name = "getStateObserver", .key = key});
        std::string rest = key;
        if (stripDomainFromKey(rest, "Algs"))
            return algs.getState(rest);
        if (key == "DebugInfo")
            return json::object({{"ResetCount", resetCount}, {"DisjointImageCount", disjointImageCount}});
        return std::nullopt;
    }
    void handleHIDEvents(std::uint64_t timestamp, std::vector<Event>& events) {
        for (Event& event : events)
            event.timestamp = timestamp;
        if (!events.empty())
            call({.name = "hidEventsHandler", .timestamp = timestamp, .events = events});
    }
};
} // namespace VeltoTouch::Reference
