#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Analysis/Setting.h"
#include "Velto/Page/ReportPage.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VeltoTouch::Velto {

// Returns the lines that show a span of a recording: a command that plots it, and the page with the span in view. `b`
// are the settings of a second play.
[[nodiscard]] std::string plotCommand(const std::string& file, const std::vector<Analysis::Setting>& settings,
                                      const std::vector<Analysis::Setting>& b, const Page::Range& time);

// Returns the recording if it cannot be read again for its pictures (the standard input, a pipe), else null.
[[nodiscard]] std::shared_ptr<PipelineRecording> keptForPictures(const std::string& file, PipelineRecording recording);

// Draws the pictures of a report: of its worst cases, which are known when all recordings are.
class ReportPictures {
public:
    // A play for each list of settings.
    explicit ReportPictures(std::vector<std::vector<Analysis::Setting>> plays) : _plays(std::move(plays)) {}

    // Null: the file is read again.
    void keep(const std::string& file, std::shared_ptr<PipelineRecording> recording);

    // Draws those of the first groups first, `jobs` recordings at a time. Returns the exit status.
    [[nodiscard]] int draw(std::vector<Page::Group>& groups, std::size_t jobs) const;

private:
    using Cases = std::vector<Page::Case*>;
    [[nodiscard]] std::vector<Page::Picture> picturesOf(const std::string& file, const Cases& cases) const;
    [[nodiscard]] std::shared_ptr<PipelineRecording> recordingOf(const std::string& file) const;

    std::vector<std::vector<Analysis::Setting>> _plays;
    std::map<std::string, std::shared_ptr<PipelineRecording>> _kept;
};

} // namespace VeltoTouch::Velto
