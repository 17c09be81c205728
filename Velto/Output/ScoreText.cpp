#include "Velto/Output/ScoreText.h"

#include "Velto/Analysis/Counted.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

std::string_view phraseOf(Result result) noexcept {
    static constexpr std::array<std::string_view, kResultNames.size()> kPhrases{
        "found", "wrong kind", "wrong region", "missed", "quiet", "false gesture"};
    return kPhrases[static_cast<std::size_t>(result)];
}

std::string causeOf(const LabelScore& label) {
    if (label.became)
        return fmt::format("became {}{}", nameOf(*label.became),
                           label.decidedBy
                               ? fmt::format(": {:.0f} ms {} hold time-out {:.0f} ms", label.decidedBy->value,
                                             *label.became == Outcome::Hold ? ">" : "<=", label.decidedBy->bound)
                               : "");
    if (label.movedBy)
        return fmt::format("moved by {}", nameOf(*label.movedBy));
    if (label.reason)
        return fmt::format("because of {}", rowOf(*label.reason).phrase);
    if (label.taken)
        return fmt::format("touch {} in its time counts for label {}, which is too close", label.taken->touch,
                           label.taken->label);
    return label.result == Result::Missed && !label.touch ? "no touch" : "";
}

std::string faultLine(std::string_view file, const Fault& fault) {
    std::string text = fmt::format("  {:>9.2f} s  {}  {:<28}", static_cast<double>(fault.startNs) / 1e9,
                                   coloured(Colour::Red, fmt::format("{:<13}", fault.kind)), printable(fault.meant));
    if (fault.touch)
        text += fmt::format("  touch {:<4}", *fault.touch);
    if (!fault.cause.empty())
        text += fmt::format("  {}", fault.cause);
    text.erase(text.find_last_not_of(' ') + 1);
    return fmt::format("{}  {}\n", text, printable(file));
}

std::vector<std::string> countRow(const std::string& name, const ScoreTotal::Counts& counts) {
    std::vector<std::string> row{name, fmt::format("{}", counts.labels)};
    for (const std::uint64_t count : counts.results)
        row.push_back(count == 0 ? "-" : fmt::format("{}", count));
    return row;
}

std::string delayLine(std::string_view name, const std::optional<ScoreTotal::Delays>& delays) {
    return delays
               ? fmt::format("  {}: median {:.0f} ms, 95 % within {:.0f} ms\n", name, delays->medianMs, delays->p95Ms)
               : std::string();
}

std::string countTable(const ScoreTotal& total) {
    std::string table;
    for (const std::vector<std::string>& row : countRows(total)) {
        std::string line = fmt::format("  {:<22} {:>7}", printable(row[0]), row[1]);
        for (std::size_t i = 2; i < row.size(); ++i)
            line += fmt::format(" {:>13}", row[i]);
        table += (table.empty() ? coloured(Colour::Bold, line) : line) + "\n";
    }
    return table + "\n";
}

// A recall that nothing stands behind is not printed.
std::string recallText(const ScoreTotal& total) {
    if (total.counts().labels == 0)
        return "no labels, so nothing was meant";
    if (total.meant() == 0)
        return "no tap, hold or slide was meant";
    return fmt::format("{:.1f} % of what was meant found", 100.0 * total.recall());
}

} // namespace

std::vector<Fault> faultsOf(const RecordingScore& recording) {
    std::vector<Fault> faults;
    for (const LabelScore& label : recording.labels) {
        if (isRight(label.result))
            continue;
        const std::string way = label.endRegion.empty() ? label.region : label.region + " to " + label.endRegion;
        faults.push_back({.startNs = label.startNs,
                          .endNs = label.endNs,
                          .kind = phraseOf(label.result),
                          .meant = fmt::format("{} {}", label.gesture, way),
                          .touch = label.touch,
                          .cause = causeOf(label)});
    }
    for (const Stray& stray : recording.strays)
        faults.push_back({.startNs = stray.startNs,
                          .endNs = stray.endNs,
                          .kind = "stray",
                          .meant = fmt::format("{} {}", nameOf(stray.gesture), nameOf(stray.region)),
                          .touch = stray.touch,
                          .cause = "not meant"});
    std::ranges::stable_sort(faults, {}, &Fault::startNs);
    return faults;
}

std::string faultLines(const RecordingScore& recording) {
    std::string text;
    for (const Fault& fault : faultsOf(recording))
        text += faultLine(recording.file, fault);
    return text;
}

std::vector<std::vector<std::string>> countRows(const ScoreTotal& total) {
    std::vector<std::vector<std::string>> rows{{"meant", "labels"}};
    for (std::size_t i = 0; i < kResultNames.size(); ++i)
        rows.front().emplace_back(phraseOf(static_cast<Result>(i)));
    for (const auto& [gesture, regions] : total.byGesture()) {
        for (const auto& [region, counts] : regions)
            rows.push_back(countRow(fmt::format("{} {}", gesture, region), counts));
    }
    rows.push_back(countRow("all", total.counts()));
    return rows;
}

std::string totalText(const ScoreTotal& total) {
    return (total.counts().labels == 0 ? std::string() : countTable(total)) + totalSentences(total);
}

std::string totalSentences(const ScoreTotal& total) {
    std::string text = fmt::format("  {}, {:.2f} h{}: {}, {}", counted(total.recordings(), "recording"), total.hours(),
                                   total.failed() > 0 ? fmt::format(", {} not read", total.failed()) : "",
                                   recallText(total), counted(total.strays(), "stray gesture"));
    if (const auto perHour = total.falsePerHour())
        text += fmt::format(", {:.1f} false gestures an hour", *perHour);
    text += "\n";
    text += delayLine("hold, from the label's start", total.holdDelays());
    text += delayLine("tap, from the label's end", total.tapDelays());
    return text;
}

} // namespace VeltoTouch::Velto
