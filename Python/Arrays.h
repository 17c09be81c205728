#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>

// Rows as numpy arrays, without a copy.

namespace VeltoTouch::Python {

namespace py = pybind11;

// Returns what frees the rows, once nobody uses them any more.
template <class Row>
[[nodiscard]] py::capsule ownerOf(std::unique_ptr<std::vector<Row>> rows) {
    return {rows.release(), [](void* each) { delete static_cast<std::vector<Row>*>(each); }};
}

// Shape (rows,).
template <class Row>
[[nodiscard]] py::array arrayOf(std::vector<Row> rows) {
    auto owned = std::make_unique<std::vector<Row>>(std::move(rows));
    const auto& kept = *owned;
    return py::array_t<Row>(static_cast<py::ssize_t>(kept.size()), kept.data(), ownerOf(std::move(owned)));
}

// Shape (rows, Width).
template <class T, std::size_t Width>
[[nodiscard]] py::array arrayOf(std::vector<std::array<T, Width>> rows) {
    auto owned = std::make_unique<std::vector<std::array<T, Width>>>(std::move(rows));
    const auto& kept = *owned;
    const std::array<py::ssize_t, 2> shape{static_cast<py::ssize_t>(kept.size()), static_cast<py::ssize_t>(Width)};
    const auto* const first = reinterpret_cast<const T*>(kept.data()); // as py::array wants it
    return py::array_t<T>(shape, first, ownerOf(std::move(owned)));
}

} // namespace VeltoTouch::Python
