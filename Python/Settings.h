#pragma once

#include "Velto/Analysis/Setting.h"

#include <vector>

#include <pybind11/pybind11.h>

namespace VeltoTouch::Python {

// Returns a dictionary's settings: keys are full property keys, values what JSON can say. Raises ValueError for a key
// or a value that the pipeline does not accept; warns of values that are surely not meant.
[[nodiscard]] std::vector<Analysis::Setting> settingsOf(const pybind11::dict& settings);

} // namespace VeltoTouch::Python
