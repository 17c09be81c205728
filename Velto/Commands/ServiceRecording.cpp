#include "Velto/Commands/ServiceRecording.h"

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Output/Files.h"

#include <stdexcept>

namespace VeltoTouch::Velto {
namespace {

RecordedExtent extentOf(const PipelineRecording& recording) {
    RecordedExtent extent;
    for (const Frame& frame : recording.frames()) { // saved in the order of time
        extent.metadata += frame.type == Frame::Type::Metadata ? 1 : 0;
        if (frame.type != Frame::Type::InputReport)
            continue;
        if (extent.reports++ == 0)
            extent.firstReport = HostTime(frame.timestampNs);
        extent.lastReport = HostTime(frame.timestampNs);
    }
    return extent;
}

} // namespace

bool RecordedExtent::isFull() const noexcept { return reports + metadata >= kMaxRecordedFrames; }

double RecordedExtent::seconds() const noexcept { return Seconds(lastReport - firstReport).count(); }

RecordedExtent saveRecording(const Ref<Value>& recording, const std::string& file) {
    const auto* container = as<String>(recording);
    if (container == nullptr)
        throw std::runtime_error("the service gives no recording");
    writeFile(file, container->text());
    return extentOf(PipelineRecording(makeRef<Data>(container->text()).get()));
}

} // namespace VeltoTouch::Velto
