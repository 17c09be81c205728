#pragma once
#include "Tests/Reference/Recording.h"
#include <string_view>
namespace VeltoTouch::Reference {
inline void require(bool condition, const std::string& message) {
    if (!condition)
        throw std::invalid_argument(message);
}
// A container with the elements of the old one's list, each changed; an absent list is empty, and what is no array is
// kept for the reader.
template <class Change>
json containerOf(int version, const json& old, const char* listKey, Change change) {
    json list = old.value(listKey, json::array());
    if (list.is_array())
        for (json& element : list) {
            require(element.is_object(), "invalid frame");
            element = change(element);
        }
    return {{"Version", version}, {"Frames", list}};
}
inline json migrateVersion0(const json& old) {
    return containerOf(1, old, "Reports", [](const json& report) {
        require(report.contains("Timestamp"), "frame lacks Timestamp");
        require(report.contains("ReportData"), "frame lacks ReportData");
        json frame;
        frame["Type"] = "InputReport";
        frame["Timestamp"] = report["Timestamp"];
        frame["Report"] = report["ReportData"];
        return frame;
    });
}
inline json migrateVersion1(const json& old) {
    return containerOf(2, old, "Frames", [](json frame) {
        require(frame.contains("Type"), "frame lacks Type");
        require(frame["Type"].is_string(), "frame Type isn't a string");
        if (frame["Type"] == "InputReport") {
            require(frame.contains("Report"), "frame lacks Report");
            frame["Data"] = json(frame["Report"]);
            frame.erase("Report");
        }
        return frame;
    });
}
// The container brought to version 2; throws std::invalid_argument.
inline json migrate(const Value& container) {
    require(container && container->is_object(), "invalid container");
    require(container->value("Version", json()).is_number(), "invalid version");
    const std::uint64_t version = unsignedReading((*container)["Version"]);
    require(version <= 2, "invalid container version: " + std::to_string(version));
    if (version == 0)
        return migrateVersion1(migrateVersion0(*container));
    return version == 1 ? migrateVersion1(*container) : *container;
}
// The parser takes a NUL for the end of the text, but JSON holds none.
inline Value parseText(std::string_view text) {
    if (text.find('\0') != std::string_view::npos)
        return std::nullopt;
    const json parsed = json::parse(text.begin(), text.end(), nullptr, false);
    return parsed.is_discarded() ? Value() : Value(parsed);
}
inline Frame readFrame(const json& element) {
    require(element.is_object(), "invalid frame");
    require(element.value("Type", json()).is_string(), "invalid frame type");
    require(element.value("Timestamp", json()).is_number(), "invalid frame timestamp");
    const std::string type = element["Type"].get<std::string>();
    require(type == "State" || type == "InputReport" || type == "Metadata", "invalid frame type");
    Frame frame;
    frame.timestampNs = unsignedReading(element["Timestamp"]);
    if (type == "InputReport") {
        frame.type = Frame::Type::InputReport;
        require(element.value("Data", json()).is_string(), "invalid report");
        frame.report = bytesFromHexString(element["Data"].get<std::string>());
    } else {
        frame.type = type == "State" ? Frame::Type::State : Frame::Type::Metadata;
        require(element.value("Key", json()).is_string(),
                type == "State" ? "invalid state key" : "invalid metadata key");
        frame.key = element["Key"].get<std::string>();
        frame.value = element.contains("Value") ? Value(element["Value"]) : Value();
    }
    return frame;
}
// Frames in file order. Throws std::runtime_error when the migration fails, std::invalid_argument for anything else.
// A view without data counts as missing text.
inline std::list<Frame> readContainer(std::string_view text) {
    require(text.data() != nullptr, "json not supplied");
    json container;
    try {
        container = migrate(parseText(text));
    } catch (const std::exception& error) {
        throw std::runtime_error(std::string("migrateSerializedContainer failed: ") + error.what());
    }
    require(container.value("Frames", json()).is_array(), "invalid frames");
    std::list<Frame> frames;
    for (const json& element : container["Frames"])
        frames.push_back(readFrame(element));
    return frames;
}
// Trims and sorts the recording itself, then gives its compact JSON text. Never fails: text that is no UTF-8 is
// patched, binary becomes an object, NaN and infinities become null.
inline std::string writeContainer(Recording& recording) {
    recording.setMaxFrameCount(recording.maxFrameCount); // trims
    Recording::sortFrames(recording.frames);
    json container = {{"Version", 2}, {"Frames", json::array()}};
    for (const Frame& frame : recording.frames) {
        const bool isReport = frame.type == Frame::Type::InputReport;
        const bool isState = frame.type == Frame::Type::State;
        if (!isReport && !isState && frame.type != Frame::Type::Metadata)
            continue;
        json object;
        object["Type"] = isReport ? "InputReport" : isState ? "State" : "Metadata";
        object["Timestamp"] = frame.timestampNs;
        object[isReport ? "Data" : "Key"] = isReport ? hexStringFromBytes(frame.report) : frame.key;
        if (!isReport && frame.value)
            object["Value"] = *frame.value;
        container["Frames"].push_back(object);
    }
    return container.dump(-1, ' ', false, json::error_handler_t::replace);
}
} // namespace VeltoTouch::Reference
