#include "Velto/Output/ScoreText.h"

#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

std::string_view phraseOf(Result result) noexcept {
    static constexpr std::array<std::string_view, kResultNames.size()> kPhrases{
        "found", "wrong kind", "wrong region", "missed", "quiet", "false gesture"};
    return kPhrases[static_cast<std::size_t>(result)];
}

// "1 recording", "2 recordings".
std::string counted(std::uint64_t count, std::string_view what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
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
        return fmt::format("because of {}", nameOf(*label.reason));
    return label.result == Result::Missed && !label.touch ? "no touch" : "";
}

std::string faultLine(std::string_view file, std::uint64_t startNs, std::string_view fault, const std::string& meant,
                      const std::optional<std::size_t>& touch, const std::string& cause) {
    std::string text = fmt::format("  {:>9.2f} s  {}  {:<28}", static_cast<double>(startNs) / 1e9,
                                   coloured(Colour::Red, fmt::format("{:<13}", fault)), printable(meant));
    if (touch)
        text += fmt::format("  touch {:<4}", *touch);
    if (!cause.empty())
        text += fmt::format("  {}", cause);
    text.erase(text.find_last_not_of(' ') + 1);
    return fmt::format("{}  {}\n", text, printable(file));
}

std::string tableRow(const std::string& name, const ScoreTotal::Counts& counts) {
    std::string text = fmt::format("  {:<22} {:>7}", printable(name), counts.labels);
    for (const std::uint64_t count : counts.results)
        text += count == 0 ? fmt::format(" {:>13}", "-") : fmt::format(" {:>13}", count);
    return text + "\n";
}

std::string delayLine(std::string_view name, const std::optional<ScoreTotal::Delays>& delays) {
    return delays
               ? fmt::format("  {}: median {:.0f} ms, 95 % within {:.0f} ms\n", name, delays->medianMs, delays->p95Ms)
               : std::string();
}

// A table kind by region.
std::string countTable(const ScoreTotal& total) {
    std::string heading = fmt::format("  {:<22} {:>7}", "meant", "labels");
    for (std::size_t i = 0; i < kResultNames.size(); ++i)
        heading += fmt::format(" {:>13}", phraseOf(static_cast<Result>(i)));
    std::string text = coloured(Colour::Bold, heading) + "\n";
    for (const auto& [gesture, regions] : total.byGesture()) {
        for (const auto& [region, counts] : regions)
            text += tableRow(fmt::format("{} {}", gesture, region), counts);
    }
    return text + tableRow("all", total.counts()) + "\n";
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

std::string faultLines(const RecordingScore& recording) {
    std::vector<std::pair<std::uint64_t, std::string>> lines; // by their time
    for (const LabelScore& label : recording.labels) {
        if (isRight(label.result))
            continue;
        const std::string way = label.endRegion.empty() ? label.region : label.region + " to " + label.endRegion;
        lines.emplace_back(label.startNs,
                           faultLine(recording.file, label.startNs, phraseOf(label.result),
                                     fmt::format("{} {}", label.gesture, way), label.touch, causeOf(label)));
    }
    for (const Stray& stray : recording.strays)
        lines.emplace_back(stray.startNs, faultLine(recording.file, stray.startNs, "stray",
                                                    fmt::format("{} {}", nameOf(stray.gesture), nameOf(stray.region)),
                                                    stray.touch, "not meant"));
    std::ranges::stable_sort(lines, {}, &decltype(lines)::value_type::first);
    std::string text;
    for (const auto& [startNs, line] : lines)
        text += line;
    return text;
}

std::string totalText(const ScoreTotal& total) {
    std::string text = total.counts().labels == 0 ? std::string() : countTable(total);
    text += fmt::format("  {}, {:.2f} h{}: {}, {}", counted(total.recordings(), "recording"), total.hours(),
                        total.failed() > 0 ? fmt::format(", {} not read", total.failed()) : "", recallText(total),
                        counted(total.strays(), "stray gesture"));
    if (const auto perHour = total.falsePerHour())
        text += fmt::format(", {:.1f} false gestures an hour", *perHour);
    text += "\n";
    text += delayLine("hold, from the label's start", total.holdDelays());
    text += delayLine("tap, from the label's end", total.tapDelays());
    if (total.failed() > 0)
        text += "  of a damaged recording, velto recover saves what is whole\n";
    return text;
}

} // namespace VeltoTouch::Velto
