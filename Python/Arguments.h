#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include <pybind11/pybind11.h>

// Arguments as they come from Python. Of a wrong type they are a TypeError, of a wrong value a ValueError; both begin
// with the argument's name.

namespace VeltoTouch::Python {

namespace py = pybind11;

// Returns a str as UTF-8.
[[nodiscard]] std::string textIn(const std::string& name, py::handle value);

// Returns a whole number within its bounds.
[[nodiscard]] std::uint64_t wholeNumberIn(const std::string& name, py::handle value, std::uint64_t least,
                                          std::uint64_t most);
template <class Number>
[[nodiscard]] Number numberIn(const std::string& name, py::handle value, Number least,
                              Number most = std::numeric_limits<Number>::max()) {
    return static_cast<Number>(wholeNumberIn(name, value, least, most));
}

// Raises TypeError("NAME: WANTED is wanted, not TYPE").
[[noreturn]] void refuseType(const std::string& name, const std::string& wanted, py::handle value);

} // namespace VeltoTouch::Python
