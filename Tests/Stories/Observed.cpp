#include "Tests/Stories/Observed.h"

#include "Tests/Stories/Differences.h"
#include "Tests/Stories/Values.h"
#include "Tests/Support/Reports.h"

#include <array>
#include <bit>

namespace VeltoTouch::Tests {
namespace {

Reference::Event eventOf(const HIDEvent& event) {
    Reference::Event seen{.timestamp = event.timeStamp, .options = event.options, .phase = event.phase};
    if (const auto* vendor = std::get_if<VendorDefined>(&event.payload)) {
        seen.kind = Reference::Event::Kind::Vendor;
        seen.usagePage = vendor->usagePage;
        seen.usage = vendor->usage;
        seen.version = vendor->version;
        return seen;
    }
    const auto& finger = std::get<Digitizer>(event.payload);
    seen.transducerType = finger.transducerType;
    seen.index = finger.index;
    seen.identity = finger.identity;
    seen.eventMask = finger.eventMask;
    seen.buttonMask = finger.buttonMask;
    seen.generationCount = finger.generationCount;
    seen.x = finger.x;
    seen.y = finger.y;
    seen.z = finger.z;
    seen.tipPressure = finger.tipPressure;
    seen.barrelPressure = finger.barrelPressure;
    seen.range = finger.range;
    seen.touch = finger.touch;
    return seen;
}

Reference::Image imageOf(const InputReport::Image& image) {
    return {image.frameNumber, image.timestampMs, image.reserved0, image.reserved1,
            image.reserved2,   image.reserved3,   image.padRaw,    image.padSignal};
}

constexpr std::array<const char*, 9> kCallbackNames{"setStateObserver",     "inputReportObserver",  "metadataHandler",
                                                    "invalidReportHandler", "firmwareEventHandler", "imageHandler",
                                                    "disjointImageHandler", "hidEventsHandler",     "getStateObserver"};

// "-nan" is "nan"; the counters' text is each one's own.
std::string withoutChoices(const std::string& line) {
    std::string text = line.substr(0, line.find("Event Stats ***\n"));
    for (std::size_t at = 0; (at = text.find("-nan", at)) != std::string::npos;)
        text.erase(at, 1);
    return text;
}

using Counts = std::array<std::uint64_t, sizeof(EventStats) / sizeof(std::uint64_t)>;

// As if a callback had written to its pipeline while it was asked.
void disturb(std::uint32_t& disjointImageCount, std::uint32_t& holdTimeoutMs) {
    ++disjointImageCount;
    ++holdTimeoutMs;
}

} // namespace

Observed::Observed(Pipeline& ours, Reference::Pipeline& theirs, bool isLogged) : _ours(ours), _theirs(theirs) {
    if (isLogged)
        _log.emplace(OS_LOG_TYPE_DEBUG);
    theirs.algs.debugLog = isLogged;
    theirs.whenCalled = [&theirs](const std::string& name) {
        if (name == kCallbackNames[8])
            disturb(theirs.disjointImageCount, theirs.algs.handStats.holdTimeoutMs);
    };
}

void Observed::add(Reference::Call call, const Ref<Value>& value) {
    call.state = Reference::stateOf(_ours);
    _calls.push_back({std::move(call), value});
}

void Observed::install(std::uint32_t callbacks) {
    const auto isWanted = [callbacks](std::uint32_t bit) { return (callbacks >> bit & 1U) != 0; };
    _theirs.callbacks.clear();
    for (std::uint32_t bit = 0; bit < kCallbackNames.size(); ++bit) {
        if (isWanted(bit))
            _theirs.callbacks.insert(kCallbackNames[bit]);
    }
    const auto stateCall = [this](const char* name) {
        return [this, name](std::uint64_t time, const std::string& key, const Ref<Value>& value) {
            add({.name = name, .timestamp = time, .key = key}, value);
        };
    };
    const auto reportCall = [this](const char* name) {
        return [this, name](std::uint64_t time, const std::uint8_t* report, std::size_t length) {
            add({.name = name, .timestamp = time, .report = {report, report + length}});
        };
    };
    const auto choose = [&](std::uint32_t bit, auto& callback, auto function) {
        callback = nullptr;
        if (isWanted(bit))
            callback = function;
    };
    choose(0, _ours.setStateObserver, stateCall(kCallbackNames[0]));
    choose(1, _ours.inputReportObserver, reportCall(kCallbackNames[1]));
    choose(2, _ours.metadataHandler, stateCall(kCallbackNames[2]));
    choose(3, _ours.invalidReportHandler, reportCall(kCallbackNames[3]));
    choose(4, _ours.firmwareEventHandler, [this](std::uint64_t time, const InputReport::FirmwareEvent& event) {
        add({.name = kCallbackNames[4], .timestamp = time, .firmwareEvent = {event.event, event.context}});
    });
    choose(5, _ours.imageHandler, [this](std::uint64_t time, const InputReport::Image& image) {
        add({.name = kCallbackNames[5], .timestamp = time, .image = imageOf(image)});
    });
    choose(6, _ours.disjointImageHandler,
           [this](std::uint64_t time, std::uint32_t previous, const InputReport::Image& image) {
               add({.name = kCallbackNames[6], .timestamp = time, .previousFrame = previous, .image = imageOf(image)});
           });
    choose(7, _ours.hidEventsHandler, [this](std::uint64_t time, const HIDEvents& events) {
        Reference::Call call{.name = kCallbackNames[7], .timestamp = time};
        for (const Ref<HIDEvent>& event : events)
            call.events.push_back(eventOf(*event));
        add(std::move(call));
    });
    choose(8, _ours.getStateObserver, [this](const std::string& key) {
        add({.name = kCallbackNames[8], .key = key});
        disturb(_ours.disjointImageCount, _ours.algs.handStats.holdTimeoutMs);
    });
}

void Observed::setCounters(std::uint64_t count) {
    Counts counts;
    counts.fill(count);
    _ours.algs.eventStats = std::bit_cast<EventStats>(counts);
    for (auto* counters : {&_theirs.algs.eventStats.dispatched, &_theirs.algs.eventStats.rejected}) {
        for (auto& [name, counter] : *counters)
            counter = count;
    }
    _ours.resetCount = _theirs.resetCount = static_cast<std::uint32_t>(count);
}

std::string Observed::differenceOfStamps(std::uint64_t time, std::size_t count) {
    HIDEvents ours;
    std::vector<Reference::Event> theirs(count, Reference::Event{.kind = Reference::Event::Kind::Vendor, .usage = 1});
    for (std::size_t i = 0; i < count; ++i)
        ours.push_back(IOHIDEventCreateVendorDefinedEvent(nullptr, 0, 0, 1, 0, {}, 0));
    _ours.handleHIDEvents(time, ours);
    _theirs.handleHIDEvents(time, theirs);
    for (std::size_t i = 0; i < count; ++i) {
        if (ours[i]->timeStamp != theirs[i].timestamp)
            return "stamps of a batch";
    }
    return {};
}

std::string Observed::differenceAfterFrame() const {
    const Algs& ours = _ours.algs;
    const Reference::Recognizer& theirs = _theirs.algs;
    for (std::size_t i = 0; i < kPadCount; ++i) {
        if (const char* field = differenceOfPixel(ours.pixels[i], theirs.pixels[i]))
            return "pad " + std::to_string(i) + ": " + field;
    }
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        if (const char* field = differenceOfPixel(ours.virtualPixels[i], theirs.virtualPixels[i]))
            return theirs.virtualPixels[i].name + ": " + field;
        if (const char* field = differenceOfGroup(ours.virtualImage, theirs.virtualImage, i))
            return theirs.virtualPixels[i].name + " of the virtual image: " + field;
    }
    if (const char* field = differenceOfHand(ours.handStats, theirs.handStats))
        return std::string("hand: ") + field;
    const bool isSame = ours.lastEventPhase == theirs.lastEventPhase &&
                        _ours.lastFrameNumber == _theirs.lastFrameNumber &&
                        _ours.hasLastFrame == _theirs.hasLastFrame && _ours.resetCount == _theirs.resetCount &&
                        _ours.disjointImageCount == _theirs.disjointImageCount;
    return isSame ? "" : "counters of the pipeline, or the last phase";
}

std::string Observed::differenceAfterStep() {
    if (std::string difference = differenceAfterFrame(); !difference.empty())
        return difference;
    const std::vector<Call> ours = std::exchange(_calls, {});
    const std::vector<Reference::Call> theirs = std::exchange(_theirs.calls, {});
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        if (const char* field = differenceOfCall(ours[i].call, ours[i].value, theirs[i]))
            return theirs[i].name + ": " + field;
    }
    if (ours.size() != theirs.size())
        return "number of calls";
    return differenceOfCounters();
}

// Only if some have changed: to compare them by their names takes longer than a frame.
std::string Observed::differenceOfCounters() {
    std::array<std::uint64_t, 2> sums{};
    for (const std::uint64_t count : std::bit_cast<Counts>(_ours.algs.eventStats))
        sums[0] += count;
    for (const auto* counters : {&_theirs.algs.eventStats.dispatched, &_theirs.algs.eventStats.rejected}) {
        for (const auto& [name, count] : *counters)
            sums[1] += count;
    }
    if (std::exchange(_sumsOfCounters, sums) == sums ||
        areSame(_ours.algs.eventStats.statsDictionary().get(), _theirs.algs.eventStats.statsDictionary()))
        return {};
    return "counters of gestures";
}

std::string Observed::differenceOfLog() const {
    if (!_log)
        return {};
    const std::vector<LogCapture::Line> ours = _log->lines();
    const std::vector<Reference::LogLine>& theirs = _theirs.algs.log;
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        if (ours[i].category != "Algs" || ours[i].type != OS_LOG_TYPE_DEBUG ||
            withoutChoices(ours[i].message) != withoutChoices(theirs[i].text))
            return "log: " + ours[i].message + "\nand: " + theirs[i].text;
    }
    return ours.size() == theirs.size() ? "" : "number of log lines";
}

} // namespace VeltoTouch::Tests
