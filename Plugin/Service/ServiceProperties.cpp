#include "Platform/Clock.h"
#include "Platform/JSON.h"
#include "Plugin/Recording/RecordingCopy.h"
#include "Plugin/Reports/FeatureReport.h"
#include "Plugin/Service/VeltoTouchHIDService.h"
#include "Plugin/Shared/HexText.h"
#include "Plugin/Shared/KeyDomain.h"
#include "Plugin/Shared/Keys.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace VeltoTouch {
namespace {

constexpr std::array<std::int64_t, 3> kVersionNumbers{19, 0, 0};
constexpr std::array<std::uint8_t, 10> kFirmwareDebugReportIDs{0x04, 0x10, 0x11, 0x12, 0x13,
                                                               0x1D, 0x32, 0x3B, 0x3C, 0x3F};
constexpr std::size_t kDebugReportLength = 128;
constexpr std::size_t kHoldDurationReportLength = 32;
constexpr std::size_t kFramesCopiedAtOnce = 64; // a few microseconds

// A feature report as the device returned it, or why there is none.
struct FeatureReportReading {
    IOReturn status;
    std::array<std::uint8_t, kDebugReportLength> buffer;
    std::size_t length;

    [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept { return std::span(buffer).first(length); }
};

FeatureReportReading readFeatureReport(IOHIDDeviceRef device, std::uint8_t reportID, std::size_t room) {
    FeatureReportReading reading{};
    auto length = static_cast<CFIndex>(room);
    reading.status = IOHIDDeviceGetReport(device, kIOHIDReportTypeFeature, reportID, reading.buffer.data(), &length);
    reading.length = static_cast<std::size_t>(std::clamp<CFIndex>(length, 0, static_cast<CFIndex>(room)));
    return reading;
}

Ref<Value> text(std::string characters) { return makeRef<String>(std::move(characters)); }

Ref<Value> versionNumbers() {
    std::vector<Ref<Value>> numbers;
    for (const std::int64_t number : kVersionNumbers)
        numbers.emplace_back(Number::withLongLong(number));
    return makeRef<Array>(std::move(numbers));
}

// For the log: a string as it stands.
std::string shown(const Value* value) {
    const auto* string = as<String>(value);
    return string != nullptr ? string->text() : JSON::description(value);
}

} // namespace

Ref<Value> VeltoTouchHIDService::getPropertyForKey(CFStringRef key) {
    if (os_log_type_enabled(_log, OS_LOG_TYPE_DEBUG))
        log(OS_LOG_TYPE_DEBUG, "getPropertyForKey:{}", shown(key));
    if (key == nullptr)
        return nullptr;
    const std::string& name = key->text();
    if (std::string rest = name; Util::stripDomainFromKey(rest, Keys::kPipelineDomain))
        return pipelineState(rest);
    if (name == Keys::kVersion)
        return versionNumbers();
    if (name == Keys::kFirmwareDebugReports)
        return firmwareDebugReports();
    if (name == Keys::kFactoryResetHoldDuration)
        return factoryResetHoldDuration();
    if (name == Keys::kRecording)
        return recordingText();
    if (name == Keys::kServicePluginDebug)
        return servicePluginDebug();
    return IOHIDDeviceGetProperty(device().get(), key);
}

bool VeltoTouchHIDService::setPropertyForKey(CFPropertyListRef value, CFStringRef key) {
    if (os_log_type_enabled(_log, OS_LOG_TYPE_DEBUG))
        log(OS_LOG_TYPE_DEBUG, "setProperty:{} forKey:{}", shown(value), shown(key));
    if (key == nullptr)
        return false;
    std::string rest = key->text();
    if (!Util::stripDomainFromKey(rest, Keys::kPipelineDomain))
        return IOHIDDeviceSetProperty(device().get(), key, value);
    const MutexLock guard(_pipelineLock);
    _recording.setState(mach_absolute_time(), rest, Ref<Value>::retained(value));
    return true;
}

Ref<Value> VeltoTouchHIDService::pipelineState(const std::string& key) {
    const MutexLock guard(_pipelineLock);
    return _pipeline->getState(key);
}

Ref<Value> VeltoTouchHIDService::firmwareDebugReports() {
    const Ref<HIDDevice> device = this->device();
    std::vector<Dictionary::Entry> reports;
    for (const std::uint8_t reportID : kFirmwareDebugReportIDs) {
        const auto reading = readFeatureReport(device.get(), reportID, kDebugReportLength);
        reports.push_back({.key = fmt::format("0x{:02x}", reportID),
                           .value = text(reading.status == kIOReturnSuccess
                                             ? Util::hexStringFromBytes(reading.bytes())
                                             : fmt::format("Failed to get report ID 0x{:x}: 0x{:x}", reportID,
                                                           static_cast<std::uint32_t>(reading.status)))});
    }
    return makeRef<Dictionary>(std::move(reports));
}

Ref<Value> VeltoTouchHIDService::factoryResetHoldDuration() {
    using FeatureReport::FactoryResetHoldDuration;
    const auto reading =
        readFeatureReport(device().get(), FactoryResetHoldDuration::kReportID, kHoldDurationReportLength);
    if (reading.status != kIOReturnSuccess)
        return nullptr;
    const auto record = FactoryResetHoldDuration::parse(reading.buffer.data(), reading.length);
    return record ? Number::withUnsignedInt(record->holdDuration) : nullptr;
}

// Copied in pieces, so that no report waits for more than one, and written out without the lock.
Ref<Value> VeltoTouchHIDService::recordingText() {
    RecordingCopy copy(2 * kMaxRecordedFrames); // the recording is trimmed when it holds so many
    for (bool isComplete = false; !isComplete;) {
        const MutexLock guard(_pipelineLock);
        isComplete = copy.copySome(_recording, kFramesCopiedAtOnce);
    }
    return text(std::string(copy.recording().json()->bytes()));
}

Ref<Value> VeltoTouchHIDService::servicePluginDebug() {
    constexpr std::array kKeys{Keys::kVersion, Keys::kFirmwareDebugReports, Keys::kRecording, Keys::kDebugInfo,
                               Keys::kAlgsDebugInfo};
    std::vector<Dictionary::Entry> values;
    for (const std::string_view key : kKeys) {
        if (Ref<Value> value = getPropertyForKey(makeRef<String>(std::string(key)).get()))
            values.push_back({.key = std::string(key), .value = std::move(value)});
    }
    return makeRef<Dictionary>(std::move(values));
}

} // namespace VeltoTouch
