#include "Velto/Page/TuningPage.h"

#include "Velto/Analysis/LineMembers.h"
#include "Velto/Page/Document.h"
#include "Velto/Page/JSONText.h"

#include <fmt/format.h>

namespace VeltoTouch::Page {
namespace {

using namespace Analysis;

std::string faultsArray(const Faults& faults) {
    return fmt::format("[{},{},{},{},{}]", faults.missed, faults.wrong, faults.isFalse, faults.stray, faults.cost());
}

std::string front(const std::vector<bool>& isOnFront) {
    std::string places;
    for (std::size_t i = 0; i < isOnFront.size(); ++i) {
        if (isOnFront[i])
            places += fmt::format("{}{}", places.empty() ? "" : ",", i);
    }
    return '[' + places + ']';
}

// The point of the present settings, if it is one of the grid.
std::string presentPoint(const std::vector<Axis>& axes) {
    std::size_t point = 0;
    for (const Axis& axis : axes) {
        if (!axis.presentPlace)
            return "null";
        point = point * axis.values.size() + *axis.presentPlace;
    }
    return fmt::format("{}", point);
}

} // namespace

std::string tuningPage(const std::vector<Axis>& axes, const Tuned& tuned, const std::string& text) {
    const auto valueText = [](const std::string& value) { return quoted(value); };
    const auto axis = [&](const Axis& each) {
        return fmt::format(R"({{"key":{},"values":{}}})", quoted(each.key), arrayOf(each.values, valueText));
    };
    const auto present = [](const Axis& each) { return quoted(each.present); };
    return document(fmt::format(R"({{"kind":"tuning","sweeps":{},"points":{},"front":{},"best":{},"text":{},)"
                                R"("present":{{"point":{},"values":{},"faults":{}}}}})",
                                arrayOf(axes, axis), arrayOf(tuned.points, faultsArray), front(tuned.isOnFront),
                                orNull(tuned.best), quoted(text), presentPoint(axes), arrayOf(axes, present),
                                faultsArray(tuned.present)));
}

} // namespace VeltoTouch::Page
