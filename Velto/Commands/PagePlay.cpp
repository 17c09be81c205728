#include "Velto/Commands/PagePlay.h"

#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Analysis/WouldBe.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Output/TouchText.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace VeltoTouch::Velto {

using namespace Analysis;

namespace {

// Whether a file is there that is no page: a recording, say, that was meant to be read.
bool holdsAnother(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) || std::filesystem::file_size(path, error) == 0)
        return false;
    constexpr std::string_view kPage = "<!DOCTYPE html>";
    std::string begin(kPage.size(), '\0');
    std::ifstream(path, std::ios::binary).read(begin.data(), static_cast<std::streamsize>(begin.size()));
    return begin != kPage;
}

} // namespace

Page::Play playForPage(const std::string& file, PipelineRecording& recording, const std::vector<Setting>& settings,
                       const std::optional<Page::Range>& alternatives) {
    const Track track(recording.frames());
    Page::Play play{.file = file,
                    .recording = recording,
                    .settings = settings,
                    .touches = touchesOf(track, settings, TouchObserver::Contributions::Follow),
                    .labels = labelsOf(recording.frames()),
                    .texts = {}};
    std::vector<Touch*> shown;
    Typicals typicals;
    for (Touch& touch : play.touches) {
        typicals.add(touch);
        if (alternatives && alternatives->holds(touch.startNs, touch.endNs))
            shown.push_back(&touch);
    }
    if (!shown.empty())
        findAlternatives(track, settings, shown);
    const std::vector<const Label*> labels = labelsByTouch(play.labels, play.touches);
    for (const Touch& touch : play.touches)
        play.texts.push_back(
            {.heading = touchHeading(touch, labels[touch.number - 1]), .details = touchDetails(touch, typicals)});
    return play;
}

CLI::Option* addPage(App& app, std::string& target) {
    CLI::Option* option = app.add_option("--html", target, "Also write a page for a browser, with pictures");
    option->check([](const std::string& path) {
        return isStandardOutput(path) ? std::string("a file is wanted: the standard output has the text") : "";
    });
    return app.offer(option, fileNames())->type_name("OUT");
}

void preparePage(const std::string& path) {
    if (path.empty())
        return;
    leaveOutColours(); // the texts stand in the page too
    about(path, [&path] {
        requireWritable(path);
        if (holdsAnother(path))
            throw std::runtime_error("what is there is no page, and is kept");
    });
}

int writePage(const std::string& path, const std::function<std::string()>& pageOf) {
    return path.empty() ? 0 : forEachFile({path}, [&](const std::string& file) { writeFile(file, pageOf()); });
}

} // namespace VeltoTouch::Velto
