#pragma once

#include "Velto/Analysis/Setting.h"

#include <vector>

#include <pybind11/pybind11.h>

namespace VeltoTouch::Python {

// Settings that the pipeline accepts.
struct JudgedSettings {
    std::vector<Analysis::Setting> list;
};

// Returns a mapping's settings, none of None: keys are full property keys, values what JSON can say. Raises ValueError
// for a key or a value that the pipeline does not accept, TypeError for what is no mapping, no text or nothing that
// JSON knows; warns of values that are surely not meant, at the line that called the module.
[[nodiscard]] JudgedSettings settingsOf(const pybind11::object& settings);

} // namespace VeltoTouch::Python
