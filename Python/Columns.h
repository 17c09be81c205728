#pragma once

#include "Python/Recording.h"

#include <pybind11/numpy.h>

// What a recording holds beside its images, as arrays. Recording.cpp describes the fields.

namespace VeltoTouch::Python {

// Once, before any array is made.
void registerColumns();

[[nodiscard]] pybind11::array reportsOf(const Recording& recording);
[[nodiscard]] pybind11::array reportBytesOf(const Recording& recording);
[[nodiscard]] pybind11::array labelsOf(const Recording& recording);
[[nodiscard]] pybind11::array writesOf(const Recording& recording);
[[nodiscard]] pybind11::array accelerometerOf(const Recording& recording);

} // namespace VeltoTouch::Python
