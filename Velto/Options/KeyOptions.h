#pragma once

#include "Velto/Options/App.h"
#include "Velto/Options/Settings.h"

#include <string>
#include <vector>

// Options and arguments for properties of the service. A key or value that the pipeline does not accept is wrong usage,
// reported before anything is read or written.

namespace VeltoTouch::Velto {

// --set KEY=VALUE, any number of times; as an argument, KEY=VALUE... The help lists the settings.
// A command with two sets of settings names them otherwise.
CLI::Option* addSettings(App& app, std::vector<Setting>& target, KeyScope scope, const std::string& description,
                         const std::string& name = "--set");
// --set of a command that plays recordings.
CLI::Option* addPlayedSettings(App& app, std::vector<Setting>& target);
CLI::Option* addSettingArguments(App& app, std::vector<Setting>& target, const std::string& description);

// --get KEY, any number of times; as an argument, KEY..., also of gestures. The help lists what is only read.
CLI::Option* addKeys(App& app, std::vector<std::string>& target, const std::string& description);
CLI::Option* addServedKeyArguments(App& app, std::vector<std::string>& target, const std::string& description);

} // namespace VeltoTouch::Velto
