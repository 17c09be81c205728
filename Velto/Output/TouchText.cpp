#include "Velto/Output/TouchText.h"

#include "Platform/JSON.h"
#include "Velto/Output/Terminal.h"

#include <cmath>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

Colour colourOf(Outcome outcome) noexcept {
    switch (outcome) {
    case Outcome::Tap:
    case Outcome::Hold:
        return Colour::Green;
    case Outcome::Cancel:
        return Colour::Red;
    case Outcome::Unfinished:
        break;
    }
    return Colour::Yellow;
}

double secondsOf(std::uint64_t ns) noexcept { return static_cast<double>(ns) / 1e9; }

// What is no number is a dash.
std::string orDash(double number, const char* format) {
    return std::isnan(number) ? "-" : fmt::format(fmt::runtime(format), number);
}

// With two decimals, and none for a whole number.
std::string numberText(double number) {
    const bool isWhole = std::isfinite(number) && number == std::floor(number) && std::fabs(number) < 1e15;
    return orDash(number, isWhole ? "{:.0f}" : "{:.2f}");
}

// The setting's name without its domain, as there is no other of that name.
std::string_view shortKey(std::string_view key) noexcept { return key.substr(key.rfind('.') + 1); }

std::string meant(const Label& label) {
    const std::string place = label.region == nameOf(PixelRegion::None) ? "" : " " + label.region;
    const std::string way = label.endRegion.empty() ? place : place + " to " + label.endRegion;
    return printable(fmt::format("    meant: {}{} (label {})", label.gesture, way, label.index));
}

std::string verdictOf(const Check& check) {
    if (!check.passed)
        return check.value > check.bound ? "timed out" : "no hold";
    if (*check.passed)
        return coloured(Colour::Green, fmt::format("{:<10}", "passed"));
    return coloured(Colour::Red, fmt::format("{:<10}", "FAILED"));
}

// By how much a check failed, and what pulled.
std::string remarkOn(const Check& check, const Typicals& typicals) {
    const double difference = std::fabs(check.bound - check.value);
    std::string text =
        check.passed == false && difference > 0 ? fmt::format("by {}", numberText(difference)) : std::string();
    for (const Pull& pull : typicals.pullsOf(check)) {
        text += text.empty() ? "" : ", ";
        text += fmt::format("{} {}", pull.of, orDash(static_cast<double>(pull.value), "{:+.2f}"));
        if (pull.typical)
            text += fmt::format(" (typical {:+.2f})", *pull.typical);
    }
    return text;
}

std::string checkLine(const Check& check, const Typicals& typicals) {
    const RuleRow& rule = rowOf(check.rule);
    const std::string_view op = check.passed ? rule.op : check.value > check.bound ? ">" : "<=";
    const std::string remark = remarkOn(check, typicals);
    return fmt::format("   {:<23} {:>9} {:<2} {:<8} {:<8} {:<10} {}{}\n", rule.name, numberText(check.value), op,
                       numberText(check.bound), rule.unit, verdictOf(check), shortKey(rule.setting),
                       remark.empty() ? "" : "  " + remark);
}

std::string pathLine(const Touch& touch) {
    const bool isStraight = touch.path.size() == 1 && touch.path.front().by == MovedBy::PeakPad;
    if (touch.path.empty() || isStraight)
        return {};
    std::string text = "   region:";
    for (const RegionChange& change : touch.path)
        text += fmt::format(" {} {} ({:.2f} s, {})", &change == &touch.path.front() ? "" : " then",
                            nameOf(change.region), secondsOf(change.ns), nameOf(change.by));
    return text + "\n";
}

std::string alternativesLine(const Touch& touch) {
    std::string text;
    const std::optional<Outcome>* said = nullptr;
    for (const Alternative& alternative : touch.wouldBe) {
        if (said == nullptr || *said != alternative.outcome)
            text += fmt::format("{} {} with ", text.empty() ? "would be" : ";",
                                alternative.outcome ? nameOf(*alternative.outcome) : "no touch");
        else
            text += ", or ";
        said = &alternative.outcome;
        text += fmt::format("{}={}", shortKey(alternative.setting.key), JSON::text(alternative.setting.value.get()));
    }
    return text.empty() ? text : coloured(Colour::Bold, text) + "\n";
}

} // namespace

std::string verdictText(const Touch& touch) {
    const auto reason = touch.reason();
    return fmt::format("{}{}{}", nameOf(touch.outcome), reason ? ", because of " : "",
                       reason ? rowOf(*reason).phrase : "");
}

std::string touchHeading(const Touch& touch, const Label* label) {
    return fmt::format("touch {:<3} {:>8.2f} s {:>6.0f} ms  {:<10}  {}{}\n", touch.number, secondsOf(touch.startNs),
                       touch.durationMs(), nameOf(touch.region), coloured(colourOf(touch.outcome), verdictText(touch)),
                       label == nullptr ? "" : meant(*label));
}

std::string touchDetails(const Touch& touch, const Typicals& typicals) {
    std::string text;
    for (const Check& check : touch.checks)
        text += checkLine(check, typicals);
    text += fmt::format("   peak {} counts on {}\n", orDash(static_cast<double>(touch.peak.value), "{:.0f}"),
                        touch.peak.pixel);
    text += pathLine(touch);
    if (touch.isCutByReset)
        text += "   a firmware reset ended it\n";
    if (touch.endedBy)
        text += fmt::format("   the hold ended while touching: {}\n", *touch.endedBy == Touch::EndedBy::Setting
                                                                          ? "the time-out was raised"
                                                                          : "the device's clock stepped back");
    return text + alternativesLine(touch);
}

std::string weakText(const WeakContact& contact) {
    return fmt::format(
        "weak  {:<3} {:>8.2f} s {:>6.0f} ms  {:<10}  {}, because of {}: {} counts, and more than {} needed\n",
        contact.number, secondsOf(contact.startNs), contact.durationMs(), contact.peak.pixel,
        coloured(Colour::Yellow, "no touch"), rowOf(contact.check.rule).phrase, numberText(contact.check.value),
        numberText(contact.check.bound));
}

} // namespace VeltoTouch::Velto
