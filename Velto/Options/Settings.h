#pragma once

#include "Velto/Analysis/Setting.h"

#include <string>
#include <string_view>
#include <vector>

namespace VeltoTouch::Velto {

// As given on the command line, KEY=VALUE: KEY is a full property key; VALUE is JSON, or a string if it is no JSON.
using Analysis::Setting;

// Whose keys a command takes: the pipeline's alone, or the device's too.
enum class KeyScope { Pipeline, Service };

// Throw std::invalid_argument, with what is wanted instead, if there is no "=" after a key, and for a key or a value
// that the pipeline does not accept.
[[nodiscard]] Setting parseSetting(std::string_view text, KeyScope scope);
void requireReadable(const std::string& key);
// The same, or the key of a gesture.
void requireServed(const std::string& key);

// Warns on standard error of values that are surely not meant.
void warnOfDoubtfulSettings(const std::vector<Setting>& settings);

} // namespace VeltoTouch::Velto
