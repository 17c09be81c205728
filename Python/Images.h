#pragma once

#include "Python/Recording.h"

#include <pybind11/numpy.h>

// A recording's images as an array, and back. Recording.cpp describes the fields.

namespace VeltoTouch::Python {

// Once, before any array is made.
void registerImages();

[[nodiscard]] pybind11::array imagesOf(const Recording& recording);

// Raises TypeError for what is no array, ValueError if a field is missing or a number is out of its range.
[[nodiscard]] Recording recordingOf(const pybind11::object& images);

} // namespace VeltoTouch::Python
