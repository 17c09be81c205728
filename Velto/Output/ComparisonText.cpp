#include "Velto/Output/ComparisonText.h"

#include "Velto/Analysis/LineMembers.h"
#include "Velto/Analysis/TouchLines.h"
#include "Velto/Output/GestureText.h"
#include "Velto/Output/Terminal.h"

#include <iterator>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

std::uint64_t countOf(const ChangeCounts& counts, Change change) { return counts[static_cast<std::size_t>(change)]; }

std::string touchObject(const Touch* touch) {
    return touch == nullptr ? "null"
                            : fmt::format(R"({{"touch":{},"outcome":"{}","region":"{}","reason":{}}})", touch->number,
                                          nameOf(touch->outcome), nameOf(touch->region), nameOrNull(touch->reason()));
}

Colour colourOf(Change change) noexcept {
    switch (change) {
    case Change::Fixed:
        return Colour::Green;
    case Change::Broken:
        return Colour::Red;
    case Change::Same:
    case Change::Other:
        break;
    }
    return Colour::Plain;
}

} // namespace

std::string touchText(const Touch* touch) {
    if (touch == nullptr)
        return "no touch";
    const auto reason = touch->reason();
    return fmt::format("{} {}{}{}", nameOf(touch->outcome), nameOf(touch->region), reason ? ", because of " : "",
                       reason ? rowOf(*reason).phrase : "");
}

std::string meantText(const Label* label, Change change) {
    if (label == nullptr)
        return change == Change::Other ? "not labelled" : "nothing";
    return fmt::format("{} {}{}{}", label->gesture, label->region, label->endRegion.empty() ? "" : " to ",
                       label->endRegion);
}

void appendChangeLines(std::string& text, std::string_view file, const std::vector<ComparedTouch>& touches) {
    const std::string member = fileMember(file);
    for (const auto& [change, label, a, b] : touches) {
        if (change != Change::Same)
            fmt::format_to(std::back_inserter(text),
                           R"({{"kind":"change"{},"change":"{}","label":{},"a":{},"b":{}}})"
                           "\n",
                           member, nameOf(change), labelObject(label), touchObject(a), touchObject(b));
    }
}

void appendChangeText(std::string& text, std::string_view file, const std::vector<ComparedTouch>& touches) {
    for (const auto& [change, label, a, b] : touches) {
        if (change != Change::Same)
            fmt::format_to(std::back_inserter(text), "  {:>9.2f} s  {}  {:<28}  {:<47}  ->  {:<47}  {}\n",
                           static_cast<double>((a != nullptr ? a : b)->startNs) / 1e9,
                           coloured(colourOf(change), fmt::format("{:<6}", nameOf(change))),
                           printable(meantText(label, change)), touchText(a), touchText(b), printable(file));
    }
}

std::string comparisonLine(const ChangeCounts& counts) {
    return fmt::format(R"({{"kind":"comparison","fixed":{},"broken":{},"other":{},"same":{}}})"
                       "\n",
                       countOf(counts, Change::Fixed), countOf(counts, Change::Broken), countOf(counts, Change::Other),
                       countOf(counts, Change::Same));
}

std::string comparisonText(const ChangeCounts& counts) {
    return fmt::format("  {} fixed, {} broken, {} otherwise changed, {} the same\n", countOf(counts, Change::Fixed),
                       countOf(counts, Change::Broken), countOf(counts, Change::Other), countOf(counts, Change::Same));
}

} // namespace VeltoTouch::Velto
