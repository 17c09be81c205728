#pragma once

#include "Velto/Options/App.h"
#include "Velto/Page/RecordingPage.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace VeltoTouch::Velto {

// Plays a recording for a page. Of touches within `alternatives` it finds what would change them.
[[nodiscard]] Page::Play playForPage(const std::string& file, PipelineRecording& recording,
                                     const std::vector<Analysis::Setting>& settings,
                                     const std::optional<Page::Range>& alternatives = std::nullopt);

// --html OUT: a page beside what is printed.
CLI::Option* addPage(App& app, std::string& target);

// Before the work and after it; without a path they do nothing. `preparePage` throws std::runtime_error where no file
// can be written, or one is there that is no page. `writePage` returns the exit status.
void preparePage(const std::string& path);
[[nodiscard]] int writePage(const std::string& path, const std::function<std::string()>& pageOf);

} // namespace VeltoTouch::Velto
