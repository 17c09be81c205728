#pragma once

#include "Plugin/Reports/InputReport.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

// Raw reports as the device sends them.

namespace VeltoTouch::Tests {

using Report = std::vector<std::uint8_t>;

// Signals of the named pads, the others 0: {{'E', 150}, {'F', 60}}.
using PadSignals = std::initializer_list<std::pair<char, std::int16_t>>;

inline InputReport::Image makeImage(std::uint32_t frame, std::uint32_t timeMs, PadSignals signals) {
    InputReport::Image image{};
    image.frameNumber = frame;
    image.timestampMs = timeMs;
    for (const auto& [pad, signal] : signals)
        image.padSignal.at(static_cast<std::size_t>(pad - 'A')) = signal;
    return image;
}

inline Report imageReport(const InputReport::Image& image) {
    Report report(InputReport::kImageReportLength);
    report[0] = InputReport::Image::kReportID;
    std::memcpy(report.data() + 1, &image, sizeof image);
    return report;
}

inline Report firmwareEventReport(std::uint8_t event) {
    Report report(InputReport::kFirmwareEventReportLength);
    report[0] = InputReport::FirmwareEvent::kReportID;
    report[1] = event;
    return report;
}

} // namespace VeltoTouch::Tests
