#include "Velto/Analysis/TouchLines.h"

#include "Platform/JSON.h"
#include "Velto/Analysis/EventLines.h"
#include "Velto/Analysis/LineMembers.h"

#include <cmath>
#include <iterator>

#include <fmt/format.h>

namespace VeltoTouch::Analysis {
namespace {

// [A,B,...], each made by `make`.
template <class Range, class Make>
std::string array(const Range& range, Make make) {
    std::string text = "[";
    for (const auto& element : range) {
        if (text.size() > 1)
            text += ',';
        text += make(element);
    }
    return text + "]";
}

std::string eventObject(const TouchEvent& event) {
    return fmt::format(R"({{"ns":{},"gesture":"{}","region":{}}})", event.ns, nameOf(event.kind),
                       nameOrNull(event.region));
}

std::string changeObject(const RegionChange& change) {
    return fmt::format(R"({{"ns":{},"region":"{}","by":"{}"}})", change.ns, nameOf(change.region), nameOf(change.by));
}

std::string peakObject(const Peak& peak) {
    return fmt::format(R"({{"pixel":"{}"{}}})", peak.pixel, numberMember("value", static_cast<double>(peak.value)));
}

std::string pullObject(const Pull& pull) {
    const std::string typical = pull.typical
                                    ? numberMember("typical", static_cast<double>(*pull.typical), "typicalText")
                                    : std::string(R"(,"typical":null)");
    return fmt::format(R"({{"of":"{}"{}{}}})", pull.of, numberMember("value", static_cast<double>(pull.value)),
                       typical);
}

std::string checkObject(const Check& check, const Typicals& typicals) {
    const RuleRow& rule = rowOf(check.rule);
    return fmt::format(R"({{"rule":"{}"{},"op":"{}"{},"unit":"{}","passed":{},"setting":"{}","pulls":{}}})", rule.name,
                       numberMember("value", check.value), rule.op, numberMember("bound", check.bound, "boundText"),
                       rule.unit, orNull(check.passed), rule.setting, array(typicals.pullsOf(check), pullObject));
}

std::string alternativeObject(const Alternative& alternative) {
    return fmt::format(R"({{"key":"{}","value":{},"outcome":"{}"}})", alternative.setting.key,
                       JSON::text(alternative.setting.value.get()),
                       alternative.outcome ? nameOf(*alternative.outcome) : "none");
}

} // namespace

std::string labelObject(const Label* label) {
    if (label == nullptr)
        return "null";
    const std::string end = label->endRegion.empty() ? "" : R"(,"endRegion":)" + JSON::quoted(label->endRegion);
    return fmt::format(R"({{"index":{},"gesture":{},"region":{}{},"startNs":{},"endNs":{}}})", label->index,
                       JSON::quoted(label->gesture), JSON::quoted(label->region), end, label->startNs, label->endNs);
}

std::string numberMember(std::string_view name, double number, std::string_view textName) {
    if (!std::isfinite(number))
        return fmt::format(R"(,"{}":null,"{}":"{}")", name, textName,
                           std::isnan(number) ? "nan"
                           : number > 0       ? "inf"
                                              : "-inf");
    // The recognizer's numbers are single precision: the shortest text that says which one.
    const auto single = static_cast<float>(number);
    return static_cast<double>(single) == number ? fmt::format(R"(,"{}":{})", name, single)
                                                 : fmt::format(R"(,"{}":{})", name, number);
}

void appendTouchLine(std::string& text, std::string_view file, const Touch& touch, const Label* label,
                     const Typicals& typicals) {
    const auto reason = touch.reason();
    fmt::format_to(
        std::back_inserter(text),
        R"({{"kind":"touch"{},"touch":{},"startNs":{},"endNs":{},"startFrame":{},"endFrame":{},"durationMs":{},)"
        R"("outcome":"{}","events":{},"region":"{}","path":{},"peak":{},"checks":{},"reason":{},"cutBy":{},)"
        R"("endedBy":{},"wouldBe":{},"label":{}}})"
        "\n",
        fileMember(file), touch.number, touch.startNs, touch.endNs, touch.startFrame, touch.endFrame,
        touch.durationMs(), nameOf(touch.outcome), array(touch.events, eventObject), nameOf(touch.region),
        array(touch.path, changeObject), peakObject(touch.peak),
        array(touch.checks, [&typicals](const Check& check) { return checkObject(check, typicals); }),
        nameOrNull(reason), touch.isCutByReset ? "\"reset\"" : "null", nameOrNull(touch.endedBy),
        array(touch.wouldBe, alternativeObject), labelObject(label));
}

void appendWeakLine(std::string& text, std::string_view file, const WeakContact& contact) {
    fmt::format_to(std::back_inserter(text),
                   R"({{"kind":"weak"{},"weak":{},"startNs":{},"endNs":{},"startFrame":{},"endFrame":{},)"
                   R"("durationMs":{},"peak":{},"checks":[{}],"reason":"{}"}})"
                   "\n",
                   fileMember(file), contact.number, contact.startNs, contact.endNs, contact.startFrame,
                   contact.endFrame, contact.durationMs(), peakObject(contact.peak),
                   checkObject(contact.check, Typicals()), nameOf(contact.check.rule));
}

} // namespace VeltoTouch::Analysis
