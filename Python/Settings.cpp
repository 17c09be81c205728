#include "Python/Settings.h"

#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"

namespace VeltoTouch::Python {
namespace {

namespace py = pybind11;
using Verdict = Judgement::Verdict;

// What JSON cannot say, such as an infinity, is its text, as on the command line.
Ref<Value> valueOf(py::object value) {
    if (py::hasattr(value, "item")) // a number of numpy's
        value = value.attr("item")();
    const auto text = py::module_::import("json").attr("dumps")(value).cast<std::string>();
    Ref<Value> parsed = JSON::parse(text);
    return parsed ? parsed : makeRef<String>(text);
}

void judge(const Analysis::Setting& setting) {
    const bool isPipelines = Keys::belowPipeline(setting.key).has_value();
    const Judgement judgement = isPipelines ? judgeWrite(setting.key, setting.value.get())
                                            : Judgement{.verdict = Verdict::Unknown, .reason = {}};
    const std::string message = setting.key + ": " + (judgement.reason.empty() ? "unknown key" : judgement.reason);
    if (judgement.verdict == Verdict::Doubtful) {
        if (PyErr_WarnEx(PyExc_UserWarning, message.c_str(), 1) != 0)
            throw py::error_already_set();
    } else if (judgement.verdict != Verdict::Sensible) {
        throw py::value_error(message);
    }
}

} // namespace

std::vector<Analysis::Setting> settingsOf(const py::dict& settings) {
    std::vector<Analysis::Setting> list;
    for (const auto& [key, value] : settings) {
        list.push_back(
            {.key = py::cast<std::string>(key), .value = valueOf(py::reinterpret_borrow<py::object>(value))});
        judge(list.back());
    }
    return list;
}

} // namespace VeltoTouch::Python
