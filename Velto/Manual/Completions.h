#pragma once

#include "Velto/Options/App.h"

#include <string>

namespace VeltoTouch::Velto::Manual {

// Scripts that complete the program's command line.
[[nodiscard]] std::string bashCompletion(const App& program); // for the package bash-completion
[[nodiscard]] std::string zshCompletion(const App& program);

} // namespace VeltoTouch::Velto::Manual
