#pragma once
#include "Tests/Reference/Recognizer.h"
#include <set>
namespace VeltoTouch::Reference {
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
    std::uint32_t resetCount = 0, lastFrameNumber = 0; // the pipeline's at that moment
};

struct Pipeline {
    // Names of the installed callbacks: those of the calls made below.
    std::set<std::string> callbacks;
    std::vector<Call> calls;
    std::uint32_t lastFrameNumber = 0;
    bool hasLastFrame = false;
    std::uint32_t resetCount = 0, disjointImageCount = 0;
    Recognizer algs;
    void call(const Call& made) {
        if (callbacks.count(made.name) == 0)
            return;
        calls.push_back(made);
        calls.back().resetCount = resetCount;
        calls.back().lastFrameNumber = lastFrameNumber;
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
        handleHIDEvents(timestamp, algs.handleImage(image));
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
    void handleHIDEvents(std::uint64_t timestamp, std::vector<Event> events) {
        for (Event& event : events)
            event.timestamp = timestamp;
        if (!events.empty())
            call({.name = "hidEventsHandler", .timestamp = timestamp, .events = events});
    }
};
} // namespace VeltoTouch::Reference
