#include "Velto/Analysis/ScoreLines.h"

#include "Platform/JSON.h"
#include "Velto/Analysis/EventLines.h"
#include "Velto/Analysis/LineMembers.h"
#include "Velto/Analysis/Members.h"

#include <iterator>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Analysis {
namespace {

// How a label became the wrong kind; empty for others.
std::string kindMembers(const LabelScore& label) {
    if (!label.became)
        return {};
    return fmt::format(R"(,"became":"{}","decidedBy":{})", nameOf(*label.became),
                       label.decidedBy
                           ? fmt::format(R"({{"rule":"{}","value":{},"bound":{}}})", nameOf(label.decidedBy->rule),
                                         label.decidedBy->value, label.decidedBy->bound)
                           : "null");
}

// Who has the touch that a label lacks; empty for others.
std::string takenMember(const LabelScore& label) {
    return label.taken ? fmt::format(R"(,"takenBy":{{"touch":{},"label":{}}})", label.taken->touch, label.taken->label)
                       : std::string();
}

void appendLabel(std::string& text, const std::string& file, const LabelScore& label) {
    fmt::format_to(std::back_inserter(text),
                   R"({{"kind":"label"{},"label":{},"gesture":{},"region":{},"endRegion":{},"startNs":{},"endNs":{},)"
                   R"("result":"{}","touch":{},"reason":{},"movedBy":{}{}{},"delayMs":{}}})"
                   "\n",
                   file, label.label, JSON::quoted(label.gesture), JSON::quoted(label.region),
                   label.endRegion.empty() ? "null" : JSON::quoted(label.endRegion), label.startNs, label.endNs,
                   nameOf(label.result), orNull(label.touch), nameOrNull(label.reason), nameOrNull(label.movedBy),
                   kindMembers(label), takenMember(label), orNull(label.delayMs));
}

void appendStray(std::string& text, const std::string& file, const Stray& stray) {
    fmt::format_to(std::back_inserter(text),
                   R"({{"kind":"stray"{},"touch":{},"gesture":"{}","region":"{}","startNs":{},"endNs":{}}})"
                   "\n",
                   file, stray.touch, nameOf(stray.gesture), nameOf(stray.region), stray.startNs, stray.endNs);
}

std::string countMembers(const ScoreTotal::Counts& counts) {
    std::string text = fmt::format(R"("labels":{})", counts.labels);
    for (std::size_t i = 0; i < kResultNames.size(); ++i)
        text += fmt::format(R"(,"{}":{})", kResultNames[i], counts.results[i]);
    return text;
}

std::string delayObject(const std::optional<ScoreTotal::Delays>& delays) {
    return delays ? fmt::format(R"({{"median":{},"p95":{}}})", delays->medianMs, delays->p95Ms)
                  : R"({"median":null,"p95":null})";
}

std::string gestureObjects(const ScoreTotal& total) {
    std::string text;
    for (const auto& [gesture, regions] : total.byGesture()) {
        text += fmt::format("{}{}:{{", text.empty() ? "" : ",", JSON::quoted(gesture));
        for (const auto& [region, counts] : regions)
            text +=
                fmt::format("{}{}:{{{}}}", text.back() == '{' ? "" : ",", JSON::quoted(region), countMembers(counts));
        text += '}';
    }
    return '{' + text + '}';
}

constexpr LineOf require{"velto score"};

std::optional<Check> decisionIn(const Dictionary& line) {
    const auto* check = as<Dictionary>(line.find("decidedBy"));
    if (check == nullptr)
        return std::nullopt;
    return Check{.rule = require(valueUnder<Rule>(*check, "rule", kRuleRows.size())),
                 .value = require(doubleUnder(*check, "value")),
                 .bound = require(doubleUnder(*check, "bound"))};
}

std::optional<LabelScore::Taken> takenIn(const Dictionary& line) {
    const auto* taken = as<Dictionary>(line.find("takenBy"));
    if (taken == nullptr)
        return std::nullopt;
    return LabelScore::Taken{.touch = require(unsignedUnder(*taken, "touch")),
                             .label = require(unsignedUnder(*taken, "label"))};
}

LabelScore labelIn(const Dictionary& line) {
    return {.label = require(unsignedUnder(line, "label")),
            .gesture = require(textUnder(line, "gesture")),
            .region = require(textUnder(line, "region")),
            .endRegion = textUnder(line, "endRegion").value_or(""),
            .startNs = require(unsignedUnder(line, "startNs")),
            .endNs = require(unsignedUnder(line, "endNs")),
            .result = require(valueUnder<Result>(line, "result", kResultNames.size())),
            .touch = unsignedUnder(line, "touch"),
            .reason = valueUnder<Rule>(line, "reason", kRuleRows.size()),
            .movedBy = valueUnder<MovedBy>(line, "movedBy", kMovedByNames.size()),
            .became = valueUnder<Outcome>(line, "became", kOutcomeNames.size()),
            .decidedBy = decisionIn(line),
            .delayMs = doubleUnder(line, "delayMs"),
            .taken = takenIn(line)};
}

Stray strayIn(const Dictionary& line) {
    return {.touch = require(unsignedUnder(line, "touch")),
            .gesture = require(valueUnder<Outcome>(line, "gesture", kOutcomeNames.size())),
            .region = require(regionCalled(require(textUnder(line, "region")))),
            .startNs = require(unsignedUnder(line, "startNs")),
            .endNs = require(unsignedUnder(line, "endNs"))};
}

// Every count of a total, under its name in the line of all.
std::vector<std::pair<std::string_view, std::uint64_t>> countsOf(const ScoreTotal& total) {
    std::vector<std::pair<std::string_view, std::uint64_t>> counts{{"recordings", total.recordings()},
                                                                   {"failed", total.failed()},
                                                                   {"labels", total.counts().labels},
                                                                   {"stray", total.strays()}};
    for (std::size_t i = 0; i < kResultNames.size(); ++i)
        counts.emplace_back(kResultNames[i], total.counts().results[i]);
    return counts;
}

// A run that was not split is its only shard.
Shard shardIn(const Dictionary& line) {
    const auto number = unsignedUnder(line, "shard");
    const auto of = unsignedUnder(line, "shards");
    const auto run = unsignedUnder(line, "run");
    if (!number || !of || !run)
        return {};
    return {.number = *number, .of = *of, .run = *run};
}

} // namespace

void appendScoreLines(std::string& text, const RecordingScore& recording) {
    const std::string file = fileMember(recording.file);
    for (const LabelScore& label : recording.labels)
        appendLabel(text, file, label);
    for (const Stray& stray : recording.strays)
        appendStray(text, file, stray);
    fmt::format_to(std::back_inserter(text),
                   R"({{"kind":"recording"{},"durationNs":{},"labels":{},"error":{}}})"
                   "\n",
                   file, recording.durationNs, recording.labels.size(),
                   recording.error.empty() ? "null" : JSON::quoted(recording.error));
}

void appendTotalLine(std::string& text, const ScoreTotal& total, const std::optional<Shard>& shard) {
    fmt::format_to(std::back_inserter(text),
                   R"({{"kind":"score","recordings":{},"failed":{},"hours":{},{},"stray":{},"falsePerHour":{},)"
                   R"("recall":{},"holdDelayMs":{},"tapDelayMs":{},"byGesture":{}{}}})"
                   "\n",
                   total.recordings(), total.failed(), total.hours(), countMembers(total.counts()), total.strays(),
                   orNull(total.falsePerHour()), total.recall(), delayObject(total.holdDelays()),
                   delayObject(total.tapDelays()), gestureObjects(total),
                   shard ? fmt::format(R"(,"shard":{},"shards":{},"run":{})", shard->number, shard->of, shard->run)
                         : std::string());
}

std::optional<RecordingScore> ScoreReader::read(std::string_view line) {
    const Ref<Value> parsed = JSON::parse(line);
    const auto* object = as<Dictionary>(parsed);
    const std::string kind = require(object != nullptr ? textUnder(*object, "kind") : std::nullopt);
    if (kind == "label") {
        _recording.labels.push_back(labelIn(*object));
    } else if (kind == "stray") {
        _recording.strays.push_back(strayIn(*object));
    } else if (kind == "recording") {
        _recording.file = require(textUnder(*object, "file"));
        _recording.durationNs = require(unsignedUnder(*object, "durationNs"));
        _recording.error = textUnder(*object, "error").value_or("");
        _total.add(_recording);
        return std::exchange(_recording, {});
    } else if (kind == "score") {
        _shard = shardIn(*object);
        _announced.clear();
        for (const auto& [name, count] : countsOf(_total))
            _announced.push_back(require(unsignedUnder(*object, name)));
    } else {
        require.refuse();
    }
    return std::nullopt;
}

std::string ScoreReader::missing() const {
    if (!_shard)
        return "no whole result of velto score --jsonl";
    const auto counts = countsOf(_total);
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (counts[i].second != _announced[i])
            return fmt::format(R"(no whole result: "{}" says {}, and {} are there)", counts[i].first, _announced[i],
                               counts[i].second);
    }
    return _recording.labels.empty() && _recording.strays.empty() ? ""
                                                                  : "no whole result: the last lines have no recording";
}

} // namespace VeltoTouch::Analysis
