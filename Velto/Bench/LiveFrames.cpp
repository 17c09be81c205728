#include "Velto/Bench/LiveFrames.h"

#include "Plugin/Recording/AccelMetadata.h"
#include "Plugin/Shared/Keys.h"

#include <string>

namespace VeltoTouch::Bench {
namespace {

Frame reportFrame(HostTime time, std::span<const std::uint8_t> report) {
    return {.type = Frame::Type::InputReport,
            .timestampNs = time.count(),
            .key = {},
            .value = nullptr,
            .report = {report.begin(), report.end()}};
}

Frame accelerationFrame(HostTime time, float x, float y, float z) {
    return {.type = Frame::Type::Metadata,
            .timestampNs = time.count(),
            .key = AccelMetadata::kKey,
            .value = AccelMetadata::valueOf(x, y, z),
            .report = {}};
}

} // namespace

std::optional<Frame> settingFrame(HostTime time, const Setting& setting) {
    const auto key = Keys::belowPipeline(setting.key);
    if (!key)
        return std::nullopt;
    return Frame{.type = Frame::Type::State,
                 .timestampNs = time.count(),
                 .key = std::string(*key),
                 .value = setting.value,
                 .report = {}};
}

LiveSurface::Handlers frameHandlers(const std::function<void(const Frame& frame)>& add) {
    LiveSurface::Handlers handlers;
    handlers.report = [add](HostTime time, std::span<const std::uint8_t> report) { add(reportFrame(time, report)); };
    handlers.acceleration = [add](HostTime time, float x, float y, float z) { add(accelerationFrame(time, x, y, z)); };
    handlers.setting = [add](HostTime time, const Setting& setting) {
        if (const auto frame = settingFrame(time, setting))
            add(*frame);
    };
    return handlers;
}

} // namespace VeltoTouch::Bench
