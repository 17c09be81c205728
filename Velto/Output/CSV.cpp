#include "Velto/Output/CSV.h"

#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/Score.h"

#include <iterator>
#include <optional>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

// A text that may hold commas, quotes or line ends.
std::string field(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos)
        return std::string(text);
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}

template <class Named>
std::string nameField(const std::optional<Named>& value) {
    return value ? std::string(nameOf(*value)) : std::string();
}

std::string imageRows(const std::string& file, const Track& track) {
    std::string rows;
    track.play({}, [&](const Track::Step& step, const Algs&, std::span<const Gesture>) {
        if (step.kind != Track::Step::Kind::Image)
            return;
        fmt::format_to(std::back_inserter(rows), "{},{},{},{}", file, step.ns, step.image.frameNumber,
                       step.image.timestampMs);
        for (const std::int16_t signal : step.image.padSignal)
            fmt::format_to(std::back_inserter(rows), ",{}", signal);
        rows += '\n';
    });
    return rows;
}

std::string touchRows(const std::string& file, const ExportedRecording& recording) {
    const std::vector<const Label*> labels = labelsByTouch(recording.labels, recording.touches);
    std::string rows;
    for (const Touch& touch : recording.touches) {
        const Label* const label = labels[touch.number - 1];
        fmt::format_to(std::back_inserter(rows), "{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}\n", file, touch.number,
                       touch.startNs, touch.endNs, touch.startFrame, touch.endFrame, touch.durationMs(),
                       nameOf(touch.outcome), nameOf(touch.region), touch.peak.pixel, touch.peak.value,
                       nameField(touch.reason()), touch.isCutByReset ? "reset" : "", nameField(touch.endedBy),
                       label == nullptr ? "" : fmt::format("{}", label->index));
    }
    return rows;
}

std::string eventRows(const std::string& file, const std::vector<Touch>& touches) {
    std::string rows;
    for (const Touch& touch : touches) {
        for (const TouchEvent& event : touch.events)
            fmt::format_to(std::back_inserter(rows), "{},{},{},{},{}\n", file, touch.number, event.ns,
                           nameOf(event.kind), nameField(event.region));
    }
    return rows;
}

std::string labelRows(const std::string& file, const ExportedRecording& recording) {
    std::string rows;
    for (const LabelScore& label : scoreOf(recording.labels, recording.touches).labels)
        fmt::format_to(std::back_inserter(rows), "{},{},{},{},{},{},{},{},{},{},{},{}\n", file, label.label,
                       field(label.gesture), field(label.region), field(label.endRegion), label.startNs, label.endNs,
                       nameOf(label.result), label.touch ? fmt::format("{}", *label.touch) : "",
                       nameField(label.reason), nameField(label.movedBy),
                       label.delayMs ? fmt::format("{}", *label.delayMs) : "");
    return rows;
}

} // namespace

std::string csvHeading(Exported what) {
    switch (what) {
    case Exported::Images:
        return "file,ns,frame,timeMs,A,B,C,D,E,F,G,H,I,J,K,L,M,N,O\n";
    case Exported::Touches:
        return "file,touch,startNs,endNs,startFrame,endFrame,durationMs,outcome,region,peakPixel,peakValue,reason,"
               "cutBy,"
               "endedBy,label\n";
    case Exported::Events:
        return "file,touch,ns,gesture,region\n";
    case Exported::Labels:
        return "file,label,gesture,region,endRegion,startNs,endNs,result,touch,reason,movedBy,delayMs\n";
    }
    return {};
}

std::string csvRows(Exported what, const ExportedRecording& recording) {
    const std::string file = field(recording.file);
    switch (what) {
    case Exported::Images:
        return imageRows(file, recording.track);
    case Exported::Touches:
        return touchRows(file, recording);
    case Exported::Events:
        return eventRows(file, recording.touches);
    case Exported::Labels:
        return labelRows(file, recording);
    }
    return {};
}

} // namespace VeltoTouch::Velto
