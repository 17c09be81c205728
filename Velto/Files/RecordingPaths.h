#pragma once

#include <string>
#include <vector>

namespace VeltoTouch::Files {

// Returns the recordings that a path stands for: itself, or a folder's *.json files and those of its subfolders, in
// byte order of their paths, which begin with the folder as it was given; none if it holds none. Links to folders are
// not followed. A folder below that cannot be read and a link that is broken are among them: who opens them reports
// why. Any thread.
[[nodiscard]] std::vector<std::string> recordingsAt(const std::string& path);

} // namespace VeltoTouch::Files
