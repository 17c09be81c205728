#include "Recording/ContainerFormat.h"
#include "Recording/ContainerScanner.h"
#include "Recording/FrameReader.h"
#include "Recording/PipelineRecording.h"

#include <string>

// A container in its usual form is scanned. Otherwise the parser decides: a container of the current version is read
// from the parser's own form, without making a value of every frame; an older one is parsed into values and migrated
// first. One reader serves both.

namespace VeltoTouch {
namespace {

using namespace Container;

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
    if (auto frames = scanContainer(container->bytes())) {
        _frames = *std::move(frames);
        return;
    }
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
