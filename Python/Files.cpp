#include "Python/Files.h"

namespace VeltoTouch::Python {

namespace py = pybind11;

std::string pathOf(const py::object& path) {
    std::string bytes = py::bytes(py::module_::import("os").attr("fsencode")(path));
    if (bytes.find('\0') != std::string::npos)
        throw py::value_error("embedded null byte");
    return bytes;
}

py::object textOf(const std::string& path) { return py::module_::import("os").attr("fsdecode")(py::bytes(path)); }

void raiseOSError(const std::string& file, int number, const std::string& message) {
    const py::object error = py::handle(PyExc_OSError)(number, message, textOf(file));
    PyErr_SetObject(py::type::of(error).ptr(), error.ptr());
    throw py::error_already_set();
}

void raiseValueError(const std::string& file, const std::string& message) {
    PyErr_SetObject(PyExc_ValueError, textOf(file + ": " + message).ptr());
    throw py::error_already_set();
}

} // namespace VeltoTouch::Python
