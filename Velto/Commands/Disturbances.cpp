#include "Velto/Commands/Disturbances.h"

#include "Velto/Analysis/InvalidReport.h"

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

std::string place(const Disturbance& disturbance) {
    return disturbance.lastFrame ? fmt::format("after frame {}", *disturbance.lastFrame) : "before the first frame";
}

std::string textOf(const Disturbance& disturbance) {
    switch (disturbance.kind) {
    case Disturbance::Kind::InvalidReport:
        return fmt::format("{}: {}", place(disturbance), Analysis::faultOf(disturbance.report));
    case Disturbance::Kind::Gap:
        return fmt::format("frame {} {}", disturbance.frame, place(disturbance));
    case Disturbance::Kind::Reset:
        return place(disturbance);
    }
    return {};
}

} // namespace

void Disturbances::add(const Disturbance& disturbance) {
    List& list = _lists[static_cast<std::size_t>(disturbance.kind)];
    if (list.lines.size() == kMostListed)
        ++list.unlisted;
    else
        list.lines.push_back(fmt::format("{:>9.3f} s  {}", Seconds(disturbance.time).count(), textOf(disturbance)));
}

std::vector<std::string> Disturbances::lines(Disturbance::Kind kind) const {
    const List& list = _lists[static_cast<std::size_t>(kind)];
    std::vector<std::string> lines = list.lines;
    if (list.unlisted > 0)
        lines.push_back(fmt::format("... and {} more", list.unlisted));
    return lines;
}

} // namespace VeltoTouch::Velto
