#include "Velto/Output/TouchReader.h"

#include "Platform/JSON.h"
#include "Velto/Analysis/Members.h"

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

constexpr LineOf require{"velto explain"};

// A value of a kind; nothing if it is of another or not there.
template <class Kind, class AnyValue>
std::optional<const Kind*> pointer(const AnyValue& value) {
    const auto* found = as<Kind>(value);
    return found != nullptr ? std::optional(found) : std::nullopt;
}

std::vector<TouchEvent> eventsIn(const Dictionary& line) {
    std::vector<TouchEvent> events;
    const auto* list = require(pointer<Array>(line.find("events")));
    for (const Ref<Value>& element : list->elements()) {
        const auto* event = require(pointer<Dictionary>(element));
        const auto region = textUnder(*event, "region");
        events.push_back({.ns = require(unsignedUnder(*event, "ns")),
                          .kind = require(gestureKindCalled(require(textUnder(*event, "gesture")))),
                          .region = region ? regionCalled(*region) : std::nullopt});
    }
    return events;
}

Touch touchIn(const Dictionary& line) {
    Touch touch{.number = require(unsignedUnder(line, "touch")),
                .startNs = require(unsignedUnder(line, "startNs")),
                .endNs = require(unsignedUnder(line, "endNs")),
                .outcome = require(valueUnder<Outcome>(line, "outcome", kOutcomeNames.size())),
                .events = eventsIn(line),
                .region = require(regionCalled(require(textUnder(line, "region"))))};
    if (const auto rule = valueUnder<Rule>(line, "reason", kRuleRows.size()))
        touch.checks.push_back({.rule = *rule, .passed = false});
    return touch;
}

std::optional<Label> labelIn(const Dictionary& line) {
    const auto* label = as<Dictionary>(line.find("label"));
    if (label == nullptr)
        return std::nullopt;
    return Label{.index = require(unsignedUnder(*label, "index")),
                 .gesture = require(textUnder(*label, "gesture")),
                 .region = require(textUnder(*label, "region")),
                 .endRegion = textUnder(*label, "endRegion").value_or(""),
                 .startNs = require(unsignedUnder(*label, "startNs")),
                 .endNs = require(unsignedUnder(*label, "endNs"))};
}

} // namespace

std::optional<ReadTouch> readTouchLine(std::string_view line) {
    const Ref<Value> parsed = JSON::parse(line);
    const auto* object = as<Dictionary>(parsed);
    const std::string kind = require(object != nullptr ? textUnder(*object, "kind") : std::nullopt);
    if (kind == "weak")
        return std::nullopt;
    if (kind != "touch")
        require.refuse();
    return ReadTouch{.file = require(textUnder(*object, "file")), .touch = touchIn(*object), .label = labelIn(*object)};
}

} // namespace VeltoTouch::Velto
