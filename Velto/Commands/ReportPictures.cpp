#include "Velto/Commands/ReportPictures.h"

#include "Platform/JSON.h"
#include "Velto/Commands/PagePlay.h"
#include "Velto/Options/Jobs.h"
#include "Velto/Page/Film.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

namespace VeltoTouch::Velto {

using namespace Analysis;

namespace {

// From a second before to a second after.
Page::Range around(const Page::Range& time) {
    constexpr std::uint64_t kSecond = 1'000'000'000;
    return {.fromNs = time.fromNs - std::min(time.fromNs, kSecond), .toNs = time.toNs + kSecond};
}

// A text as one word of a shell.
std::string shellWord(std::string_view text) {
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=.,:/@%";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string_view::npos)
        return std::string(text);
    std::string word = "'";
    for (const char c : text)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

std::string settingWords(std::string_view option, const std::vector<Setting>& settings) {
    std::string words;
    for (const Setting& setting : settings)
        words += fmt::format(" {} {}", option, shellWord(setting.key + "=" + JSON::text(setting.value.get())));
    return words;
}

// A recording's plays, and what explains their touches, which pictures go without.
struct Played {
    std::vector<Page::Play> plays = {};
    std::vector<std::vector<Page::TouchTexts>> texts = {}; // by play

    // Of a case's touches. Throws std::runtime_error if there is none of a number.
    [[nodiscard]] std::vector<std::string> explanationsOf(const std::vector<std::size_t>& touches) const {
        std::vector<std::string> explanations;
        for (std::size_t play = 0; play < touches.size(); ++play) {
            if (touches[play] == 0)
                continue;
            if (touches[play] > texts[play].size())
                throw std::runtime_error("it has changed since it was read: no pictures");
            const auto& [heading, details] = texts[play][touches[play] - 1];
            const std::string number = touches.size() > 1 ? std::to_string(play + 1) + ": " : "";
            explanations.push_back(number + heading + details);
        }
        return explanations;
    }
};

Page::Picture pictureOf(const Page::Film& film, const Page::Range& range) {
    if (const std::size_t images = film.imagesIn(range); images > Page::kMostImagesOfOne)
        return {.explanations = {fmt::format("No picture: {} images are too many.", images)}};
    return {.members = film.cut(range)};
}

} // namespace

std::string plotCommand(const std::string& file, const std::vector<Setting>& settings, const std::vector<Setting>& b,
                        const Page::Range& time) {
    const Page::Range shown = around(time);
    return fmt::format("velto plot {}{}{}{} -o plot.html\nplot.html#t={:.3f},{:.3f}", file.starts_with('-') ? "./" : "",
                       shellWord(file), settingWords("--set", settings), settingWords("--b", b),
                       static_cast<double>(shown.fromNs) / 1e9, static_cast<double>(shown.toNs) / 1e9);
}

std::shared_ptr<PipelineRecording> keptForPictures(const std::string& file, PipelineRecording recording) {
    std::error_code ignored;
    const bool isFile = file != "-" && std::filesystem::is_regular_file(file, ignored);
    return isFile ? nullptr : std::make_shared<PipelineRecording>(std::move(recording));
}

void ReportPictures::keep(const std::string& file, std::shared_ptr<PipelineRecording> recording) {
    if (recording)
        _kept.emplace(file, std::move(recording));
}

std::shared_ptr<PipelineRecording> ReportPictures::recordingOf(const std::string& file) const {
    const auto kept = _kept.find(file);
    return kept != _kept.end() ? kept->second : std::make_shared<PipelineRecording>(loadRecording(file));
}

std::vector<Page::Picture> ReportPictures::picturesOf(const std::string& file, const Cases& cases) const {
    const std::shared_ptr<PipelineRecording> recording = recordingOf(file);
    Played played;
    for (const std::vector<Setting>& settings : _plays) {
        Page::Play& play = played.plays.emplace_back(playForPage(file, *recording, settings));
        play.hasGroups = false;
        played.texts.push_back(std::exchange(play.texts, std::vector<Page::TouchTexts>(play.touches.size())));
    }
    std::vector<Page::Range> ranges;
    for (const Page::Case* each : cases)
        ranges.push_back(around(*each->time));
    const Page::Film film(played.plays, ranges);
    std::vector<Page::Picture> pictures;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        Page::Picture& picture = pictures.emplace_back(pictureOf(film, ranges[i]));
        std::ranges::move(played.explanationsOf(cases[i]->touches), std::back_inserter(picture.explanations));
    }
    return pictures;
}

int ReportPictures::draw(std::vector<Page::Group>& groups, std::size_t jobs) const {
    int status = 0;
    std::size_t left = Page::kMostPictures;
    Page::PictureBounds bounds;
    for (Page::Group& group : groups) {
        std::vector<std::string> files;
        std::map<std::string, Cases> casesOf;
        for (Page::Case* each : group.listed()) {
            if (each->touches.empty())
                continue;
            if (left == 0) {
                each->picture.explanations = {
                    fmt::format("No picture: the {} worst of this page have one.", Page::kMostPictures)};
                continue;
            }
            --left;
            Cases& cases = casesOf[each->file];
            if (cases.empty())
                files.push_back(each->file);
            cases.push_back(each);
        }
        const auto make = [&](const std::string& file) { return picturesOf(file, casesOf.at(file)); };
        const auto take = [&](const std::string& file, std::vector<Page::Picture> pictures) {
            for (std::size_t i = 0; i < pictures.size(); ++i) {
                bounds.apply(pictures[i]);
                casesOf.at(file)[i]->picture = std::move(pictures[i]);
            }
        };
        status = std::max(status, handleInOrder(files, jobs, "drawing", make, take));
    }
    return status;
}

} // namespace VeltoTouch::Velto
