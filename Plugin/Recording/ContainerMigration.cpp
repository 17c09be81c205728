#include "Plugin/Recording/ContainerMigration.h"

#include "Plugin/Recording/ContainerFormat.h"
#include "Plugin/Recording/ValueNode.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace VeltoTouch {
namespace {

using namespace Container;

using Entries = std::vector<Dictionary::Entry>;

constexpr std::string_view kReportData = "ReportData"; // version 0
constexpr std::string_view kReport = "Report";         // version 1

Dictionary::Entry entry(std::string_view key, Ref<Value> value) {
    return {.key = std::string(key), .value = std::move(value)};
}

Ref<Value> string(std::string_view text) { return makeRef<String>(std::string(text)); }

// The member under `key`, which must be there; JSON's null is.
Ref<Value> required(const Dictionary& frame, std::string_view key, const char* messageWithoutIt) {
    const Value* value = frame.find(key);
    if (value == nullptr)
        throw std::invalid_argument(messageWithoutIt);
    return ValueNode(value).value();
}

Ref<Value> frameOfReport(const Dictionary& report) {
    Entries frame;
    frame.push_back(entry(kTimestamp, required(report, kTimestamp, "frame lacks Timestamp")));
    frame.push_back(entry(kType, string(kInputReportType)));
    frame.push_back(entry(kReport, required(report, kReportData, "frame lacks ReportData")));
    return makeRef<Dictionary>(std::move(frame));
}

// A report's text moves from "Report" to "Data"; other frames stay as they are.
Ref<Value> currentFrame(const Dictionary& frame, const Ref<Value>& unchanged) {
    const Ref<Value> type = required(frame, kType, "frame lacks Type");
    if (as<String>(type) == nullptr)
        throw std::invalid_argument("frame Type isn't a string");
    if (as<String>(type)->text() != kInputReportType)
        return unchanged;
    const Ref<Value> report = required(frame, kReport, "frame lacks Report");
    Entries moved;
    for (const Dictionary::Entry& member : frame.entries()) {
        if (member.key != kReport)
            moved.push_back(member);
    }
    moved.push_back(entry(kData, report)); // of equal keys the last stays
    return makeRef<Dictionary>(std::move(moved));
}

// A container of `version` whose frames are the elements of `old`'s list called `name`, each changed by `change`.
// Without the list there are no frames; what is no array is left for the reader to reject.
template <class Change>
Ref<Value> containerOf(std::uint64_t version, const Dictionary& old, std::string_view name, Change change) {
    const ValueNode list(old.find(name));
    Ref<Value> frames = list.value();
    if (frames == nullptr || list.isArray()) {
        std::vector<Ref<Value>> changed;
        forEachFrame(name, list.elements(), [&](const ValueNode& node) {
            const Ref<Value> element = node.value();
            changed.push_back(change(*as<Dictionary>(element), element));
        });
        frames = makeRef<Array>(std::move(changed));
    }
    Entries container;
    container.push_back(entry(kVersion, Number::withUnsignedLong(version)));
    container.push_back(entry(kFrames, std::move(frames)));
    return makeRef<Dictionary>(std::move(container));
}

} // namespace

Ref<Value> migrateContainer(const Ref<Value>& container) {
    const std::uint64_t version = versionOf(ValueNode(container.get()));
    const auto& members = *as<Dictionary>(container);
    switch (version) {
    case kCurrentVersion:
        return container;
    case 0: {
        const auto toFrame = [](const Dictionary& report, const Ref<Value>&) { return frameOfReport(report); };
        return migrateContainer(containerOf(1, members, kReports, toFrame));
    }
    case 1:
        return containerOf(kCurrentVersion, members, kFrames, currentFrame);
    default:
        throw std::invalid_argument("invalid container version: " + std::to_string(version));
    }
}

} // namespace VeltoTouch
