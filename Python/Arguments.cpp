#include "Python/Arguments.h"

#include <fmt/format.h>

namespace VeltoTouch::Python {

void refuseType(const std::string& name, const std::string& wanted, py::handle value) {
    throw py::type_error(fmt::format("{}: {} is wanted, not {}", name, wanted, Py_TYPE(value.ptr())->tp_name));
}

std::string textIn(const std::string& name, py::handle value) {
    if (!py::isinstance<py::str>(value))
        refuseType(name, "str", value);
    py::ssize_t size = 0;
    const char* const text = PyUnicode_AsUTF8AndSize(value.ptr(), &size);
    if (text == nullptr)
        throw py::error_already_set();
    return {text, static_cast<std::size_t>(size)};
}

std::uint64_t wholeNumberIn(const std::string& name, py::handle value, std::uint64_t least, std::uint64_t most) {
    if (PyIndex_Check(value.ptr()) == 0)
        refuseType(name, "a whole number", value);
    const auto whole = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
    if (!whole)
        throw py::error_already_set();
    const std::uint64_t number = PyLong_AsUnsignedLongLong(whole.ptr());
    const bool isBeyond = PyErr_Occurred() != nullptr;
    PyErr_Clear();
    if (isBeyond || number < least || number > most)
        throw py::value_error(fmt::format("{}: a whole number from {} to {} is wanted", name, least, most));
    return number;
}

} // namespace VeltoTouch::Python
