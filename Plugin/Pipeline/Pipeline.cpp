#include "Plugin/Pipeline/Pipeline.h"

#include "Plugin/Shared/KeyDomain.h"
#include "Plugin/Shared/Keys.h"

#include <utility>

namespace VeltoTouch {
namespace {

constexpr std::string_view kPipelineDebugInfo = *Keys::belowPipeline(Keys::kDebugInfo);

// Calls a callback if there is one.
template <class... Parameters, class... Arguments>
void notify(const std::function<void(Parameters...)>& callback, Arguments&&... arguments) {
    if (callback)
        callback(std::forward<Arguments>(arguments)...);
}

} // namespace

void Pipeline::setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept {
    notify(setStateObserver, timestamp, key, value);
    std::string rest = key;
    if (Util::stripDomainFromKey(rest, Keys::kAlgsDomain))
        algs.setState(rest, value);
}

void Pipeline::handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) noexcept {
    notify(inputReportObserver, timestamp, report, length);
    if (const auto event = InputReport::FirmwareEvent::parse(report, length))
        handleFirmwareEvent(timestamp, *event);
    else if (const auto image = InputReport::Image::parse(report, length))
        handleImage(timestamp, *image);
    else
        notify(invalidReportHandler, timestamp, report, length);
}

void Pipeline::handleFirmwareEvent(std::uint64_t timestamp, const InputReport::FirmwareEvent& event) {
    notify(firmwareEventHandler, timestamp, event);
    if (!event.isReset())
        return;
    ++resetCount;
    HIDEvents events = algs.handleReset();
    using InputReport::FirmwareEvent;
    events.push_back(IOHIDEventCreateVendorDefinedEvent(nullptr, 0, FirmwareEvent::kResetUsagePage,
                                                        FirmwareEvent::kResetUsage, 0, {}, 0));
    handleHIDEvents(timestamp, events);
}

void Pipeline::handleImage(std::uint64_t timestamp, const InputReport::Image& image) {
    notify(imageHandler, timestamp, image);
    if (hasLastFrame && image.frameNumber != lastFrameNumber + 1) { // wraps with the device's counter
        ++disjointImageCount;
        notify(disjointImageHandler, timestamp, lastFrameNumber, image);
    }
    hasLastFrame = true;
    lastFrameNumber = image.frameNumber;
    handleHIDEvents(timestamp, algs.handleImage(image));
}

void Pipeline::handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept {
    notify(metadataHandler, timestamp, key, value);
}

void Pipeline::handleHIDEvents(std::uint64_t timestamp, const HIDEvents& events) {
    for (const Ref<HIDEvent>& event : events)
        IOHIDEventSetTimeStamp(event.get(), timestamp);
    if (!events.empty())
        notify(hidEventsHandler, timestamp, events);
}

Ref<Value> Pipeline::getState(const std::string& key) noexcept {
    notify(getStateObserver, key);
    std::string rest = key;
    if (Util::stripDomainFromKey(rest, Keys::kAlgsDomain))
        return algs.getState(rest);
    if (key != kPipelineDebugInfo)
        return nullptr;
    std::vector<Dictionary::Entry> entries;
    entries.push_back({.key = "ResetCount", .value = Number::withUnsignedInt(resetCount)});
    entries.push_back({.key = "DisjointImageCount", .value = Number::withUnsignedInt(disjointImageCount)});
    return makeRef<Dictionary>(std::move(entries));
}

} // namespace VeltoTouch
