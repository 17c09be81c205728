#include "Velto/Surface/SimulatedRecording.h"

#include "Plugin/Shared/ClockConversion.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Surface {

Ref<Value> labelValue(const Simulation::Label& label) {
    std::vector<Dictionary::Entry> entries;
    const auto addText = [&entries](const char* key, std::string_view text) {
        entries.push_back({.key = key, .value = makeRef<String>(std::string(text))});
    };
    addText("gesture", label.gesture);
    addText("region", label.region);
    if (!label.endRegion.empty())
        addText("endRegion", label.endRegion);
    entries.push_back({.key = "startMs", .value = Number::withUnsignedInt(label.startMs)});
    entries.push_back({.key = "endMs", .value = Number::withUnsignedInt(label.endMs)});
    return makeRef<Dictionary>(std::move(entries));
}

PipelineRecording recordingOf(Simulation& simulation) {
    PipelineRecording recording;
    std::uint64_t reports = 0;
    while (const auto report = simulation.next()) {
        if (++reports > kLargestRecording)
            throw std::length_error(fmt::format("the script gives more than {} reports", kLargestRecording));
        const std::uint64_t time = Util::machTimeFromNanoseconds(report->timestampNs);
        if (report->label)
            recording.handleMetadata(time, std::string(kLabelKey), labelValue(*report->label));
        recording.handleInputReport(time, report->content.data(), report->length);
    }
    return recording;
}

} // namespace VeltoTouch::Surface
