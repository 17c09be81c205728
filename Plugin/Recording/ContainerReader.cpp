#include "Plugin/Recording/ContainerReader.h"

#include "Plugin/Recording/ContainerFormat.h"
#include "Plugin/Recording/ContainerMigration.h"
#include "Plugin/Recording/ContainerScanner.h"
#include "Plugin/Recording/Damage.h"
#include "Plugin/Recording/FrameReader.h"
#include "Plugin/Recording/JSONDocument.h"
#include "Plugin/Recording/ValueNode.h"

#include <array>
#include <stdexcept>
#include <string>

// A container in its usual form is scanned. Otherwise the parser decides: a container of the current version is read
// from the parser's own form, without making a value of every frame; an older one is parsed into values and migrated
// first. One reader serves both.

namespace VeltoTouch {
namespace {

using namespace Container;

// The frames of a container of the current version. Until it was migrated, their list was called `listName`.
template <class Node>
std::list<Frame> readFrames(const Node& container, std::string_view listName) {
    const auto [nodes] = container.members(std::array{kFrames});
    if (!nodes.isArray())
        throw std::invalid_argument("invalid frames");
    std::list<Frame> frames;
    forEachFrame(listName, nodes.elements(), [&](const Node& node) { frames.push_back(readFrame(node)); });
    return frames;
}

// Rethrows what a step of the migration throws as a failure of the migration, at the same place.
template <class Step>
auto asMigration(Step step) {
    try {
        return step();
    } catch (const std::exception& error) {
        const std::string message = std::string("migrateSerializedContainer failed: ") + error.what();
        if (const std::string* place = placeOf(error))
            throw PlacedError<std::runtime_error>(message, *place);
        throw std::runtime_error(message);
    }
}

void requireJSON(const JSON::Document& document) {
    if (const auto& fault = document.fault())
        throw PlacedError<std::invalid_argument>("invalid container",
                                                 fmt::format("byte {}: {}", fault->byte, fault->cause));
}

} // namespace

ContainerContent readContainer(const Data& container) {
    if (auto frames = scanContainer(container.bytes()))
        return {.version = kCurrentVersion, .frames = *std::move(frames)};
    const JSON::Document document(container);
    const JSON::Element root = document.root();
    const std::uint64_t version = asMigration([&] {
        requireJSON(document);
        return versionOf(root);
    });
    if (version == kCurrentVersion)
        return {.version = version, .frames = readFrames(root, kFrames)};
    const Ref<Value> migrated = asMigration([&] { return migrateContainer(root.value()); });
    return {.version = version, .frames = readFrames(ValueNode(migrated.get()), version == 0 ? kReports : kFrames)};
}

} // namespace VeltoTouch
