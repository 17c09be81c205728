#include "Python/Settings.h"

#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"
#include "Python/Arguments.h"

namespace VeltoTouch::Python {
namespace {

using Verdict = Judgement::Verdict;

constexpr py::ssize_t kCallersLevel = 2; // its own is the package's

std::string jsonOf(const std::string& key, py::object value) {
    try {
        if (py::hasattr(value, "item")) // a number of numpy's
            value = value.attr("item")();
        return py::module_::import("json").attr("dumps")(value).cast<std::string>();
    } catch (const py::error_already_set& error) {
        const std::string message = key + ": " + py::str(error.value()).cast<std::string>();
        if (error.matches(PyExc_TypeError))
            throw py::type_error(message);
        if (error.matches(PyExc_ValueError))
            throw py::value_error(message);
        throw;
    }
}

// What JSON cannot say, such as an infinity, is its text, as on the command line.
Ref<Value> valueOf(const std::string& json) {
    Ref<Value> parsed = JSON::parse(json);
    return parsed ? parsed : makeRef<String>(json);
}

void judge(const Analysis::Setting& setting) {
    const bool isPipelines = Keys::belowPipeline(setting.key).has_value();
    const Judgement judgement = isPipelines ? judgeWrite(setting.key, setting.value.get())
                                            : Judgement{.verdict = Verdict::Unknown, .reason = {}};
    const std::string message = setting.key + ": " + (judgement.reason.empty() ? "unknown key" : judgement.reason);
    if (judgement.verdict == Verdict::Doubtful) {
        if (PyErr_WarnEx(PyExc_UserWarning, message.c_str(), kCallersLevel) != 0)
            throw py::error_already_set();
    } else if (judgement.verdict != Verdict::Sensible) {
        throw py::value_error(message);
    }
}

} // namespace

JudgedSettings settingsOf(const py::object& settings) {
    JudgedSettings judged;
    if (settings.is_none())
        return judged;
    if (!py::hasattr(settings, "keys"))
        refuseType("settings", "a mapping", settings);
    for (const auto& [key, value] : py::dict(settings)) {
        const std::string name = textIn("settings: a key", key);
        const std::string json = jsonOf(name, py::reinterpret_borrow<py::object>(value));
        judged.list.push_back({.key = name, .value = valueOf(json)});
        judge(judged.list.back());
    }
    return judged;
}

} // namespace VeltoTouch::Python
