#pragma once

#include "Plugin/Recording/ContainerReader.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Options/App.h"

#include <functional>
#include <string>
#include <vector>

// Recordings as the command line names them.

namespace VeltoTouch::Velto {

// Reads a recording. Throws what readFile and readContainer throw; where the place of the damage is known and
// `velto recover` can save something, a std::runtime_error that says so in place of the latter.
[[nodiscard]] ContainerContent loadContainer(const std::string& file);

// The same, with the frames sorted by time.
[[nodiscard]] PipelineRecording loadRecording(const std::string& file);

// PATH...: recordings and folders of recordings.
void addRecordings(App& app, std::vector<std::string>& target);

// FILE: one recording.
void addRecording(App& app, std::string& target);

// -o OUT: the file to write. Unset, the target is empty, which is the standard output.
CLI::Option* addOutput(App& app, std::string& target);

// The same for what must be a file: it has to be given, and the standard output is wrong usage.
CLI::Option* addOutputFile(App& app, std::string& target, const std::string& description);

// Handles each recording as `forEachFile` does. A folder stands for its *.json files and those of its subfolders, in
// byte order of their paths, which begin with the folder as it was given; links to folders are not followed. A folder
// that cannot be read or holds no recording is reported like a failed file. `work` names the progress line.
[[nodiscard]] int forEachRecording(const std::vector<std::string>& paths, const std::string& work,
                                   const std::function<void(const std::string& file)>& handle);

// Its two steps. `findRecordings` adds the recordings that the paths stand for to `files`; both return an exit status.
[[nodiscard]] int findRecordings(const std::vector<std::string>& paths, std::vector<std::string>& files);
[[nodiscard]] int handleRecordings(const std::vector<std::string>& files, const std::string& work,
                                   const std::function<void(const std::string& file)>& handle);

} // namespace VeltoTouch::Velto
