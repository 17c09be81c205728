#include "Recording/ContainerFormat.h"
#include "Recording/PipelineRecording.h"
#include "Shared/Util.h"

#include <string>

// A container of the current version is read from the parser's own form, without making a value of every frame; an
// older one is parsed into values and migrated first. One reader serves both.

namespace VeltoTouch {
namespace {

using namespace Container;

template <class T>
const T& require(const std::optional<T>& wanted, const char* messageWithoutIt) {
    if (!wanted)
        throw std::invalid_argument(messageWithoutIt);
    return *wanted;
}

// The checks run in this order; every JSON value is one that a frame can hold.
template <class Node>
Frame readFrame(const Node& node) {
    requireFrameObject(node);
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

template <class Node>
std::list<Frame> readFrames(const Node& container) {
    const auto [nodes] = container.members(std::array{kFrames});
    if (!nodes.isArray())
        throw std::invalid_argument("invalid frames");
    std::list<Frame> frames;
    for (const Node& node : nodes.elements())
        frames.push_back(readFrame(node));
    return frames;
}

// What a migration throws is told as its failure.
template <class Step>
auto asMigration(Step step) {
    try {
        return step();
    } catch (const std::exception& error) {
        throw std::runtime_error(std::string("migrateSerializedContainer failed: ") + error.what());
    }
}

} // namespace

PipelineRecording::PipelineRecording(const Data* container) {
    if (container == nullptr)
        throw std::invalid_argument("json not supplied");
    const JSON::Document document(*container);
    const JSON::Element root = document.root();
    if (asMigration([&] { return versionOf(root); }) == kCurrentVersion) {
        _frames = readFrames(root);
    } else {
        const Ref<Value> migrated = asMigration([&] { return migrateSerializedContainer(root.value()); });
        _frames = readFrames(ValueNode(migrated.get()));
    }
}

} // namespace VeltoTouch
