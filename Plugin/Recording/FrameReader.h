#pragma once

#include "Plugin/Recording/ContainerFormat.h"
#include "Plugin/Recording/Frame.h"
#include "Plugin/Shared/HexText.h"

#include <stdexcept>

namespace VeltoTouch::Container {

// Returns the value. Throws std::invalid_argument if it is absent.
template <class T>
const T& require(const std::optional<T>& wanted, const char* messageWithoutIt) {
    if (!wanted)
        throw std::invalid_argument(messageWithoutIt);
    return *wanted;
}

// Reads a frame object of the current version. Every JSON value is one that a frame can hold. The checks are made in
// this order; what is wrong throws std::invalid_argument.
template <class Node>
Frame readFrame(const Node& node) {
    const auto [type, timestamp, key, value, data] = node.members(std::array{kType, kTimestamp, kKey, kValue, kData});
    const std::string_view typeName = require(type.string(), "invalid frame type");
    Frame frame;
    frame.timestampNs = require(timestamp.unsignedNumber(), "invalid frame timestamp");
    if (typeName == kInputReportType) {
        frame.type = Frame::Type::InputReport;
        frame.report = Util::bytesFromHexString(require(data.string(), "invalid report"));
    } else if (typeName == kStateType) {
        frame.type = Frame::Type::State;
        frame.key = require(key.string(), "invalid state key");
        frame.value = value.value();
    } else if (typeName == kMetadataType) {
        frame.type = Frame::Type::Metadata;
        frame.key = require(key.string(), "invalid metadata key");
        frame.value = value.value();
    } else {
        throw std::invalid_argument("invalid frame type");
    }
    return frame;
}

} // namespace VeltoTouch::Container
