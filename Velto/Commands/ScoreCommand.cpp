#include "Platform/JSON.h"
#include "Velto/Analysis/ScoreLines.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/PagePlay.h"
#include "Velto/Options/Jobs.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/ScoreText.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Page/ReportPage.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace Analysis;

struct Options {
    std::vector<std::string> paths;
    std::vector<Setting> settings;
    std::size_t jobs = 1;
    std::optional<double> leastRecall;
    std::optional<std::uint64_t> mostFalse;
    std::optional<Shard> shard;
    bool merge = false;
    bool jsonl = false;
    std::string page; // empty: none
};

// A recording's score, and a picture of each of its first faults.
struct Scored {
    RecordingScore score;
    std::vector<Page::Picture> pictures = {};
};

std::vector<Page::Picture> picturesOf(const Options& options, const RecordingScore& score, PipelineRecording& recording,
                                      std::size_t most) {
    std::vector<Fault> faults = most == 0 ? std::vector<Fault>() : faultsOf(score);
    faults.resize(std::min(faults.size(), most));
    if (faults.empty())
        return {};
    std::vector<Page::Picture> made;
    const Pictures pictures(score.file, recording, {options.settings});
    for (const Fault& fault : faults)
        made.push_back(pictures.around(fault.startNs, fault.endNs, {fault.touch.value_or(0)}));
    return made;
}

Scored score(const Options& options, const std::string& file, std::size_t mostPictures) {
    Scored scored;
    try {
        PipelineRecording recording = loadRecording(file);
        const Track track(recording.frames());
        scored.score = scoreOf(labelsOf(recording.frames()), touchesOf(track, options.settings));
        scored.score.durationNs = track.durationNs();
        scored.score.file = file;
        scored.pictures = picturesOf(options, scored.score, recording, mostPictures);
    } catch (const std::exception& error) {
        scored.score = {.file = file, .error = messageOf(error)};
    }
    return scored;
}

// Prints recordings as they come, and the total at the end.
class Output {
public:
    explicit Output(const Options& options) : _options(options) {}

    // How many pictures the page still wants; any thread.
    [[nodiscard]] std::size_t picturesWanted() const noexcept { return _options.page.empty() ? 0 : _bounds.left(); }

    void add(Scored scored) {
        const RecordingScore& recording = scored.score;
        _total.add(recording);
        std::string text;
        if (_options.jsonl)
            appendScoreLines(text, recording);
        else
            text = faultLines(recording);
        writeStandardOutput(text);
        if (!recording.error.empty())
            complain(recording.file, recording.error);
        if (!_options.page.empty())
            addCases(scored);
    }

    // Returns the exit status.
    [[nodiscard]] int finish(const std::optional<Shard>& shard) const {
        std::string text;
        if (_options.jsonl)
            appendTotalLine(text, _total, shard);
        else
            text = totalText(_total);
        writeStandardOutput(text);
        const int written = writePage(_options.page, [this] { return page(); });
        return std::max(written, keepsItsBounds() && _total.failed() == 0 ? 0 : 1);
    }

private:
    void addCases(Scored& scored) {
        std::vector<Fault> faults = faultsOf(scored.score);
        scored.pictures.resize(faults.size());
        for (std::size_t i = 0; i < faults.size(); ++i) {
            _bounds.apply(scored.pictures[i]);
            _cases.push_back({.kind = std::string(faults[i].kind),
                              .startNs = faults[i].startNs,
                              .file = scored.score.file,
                              .texts = {faults[i].meant, faults[i].cause},
                              .picture = std::move(scored.pictures[i])});
        }
    }

    [[nodiscard]] std::string page() const {
        return Page::reportPage(
            {.title = "Score",
             .text = totalSentences(_total),
             .table = _total.counts().labels == 0 ? std::vector<std::vector<std::string>>() : countRows(_total),
             .groups = {{.title = "What went wrong", .cases = _cases}}});
    }

    [[nodiscard]] bool keepsItsBounds() const {
        if (_options.leastRecall && _total.recall() < *_options.leastRecall) {
            complain("score", fmt::format("recall {} is below {}", _total.recall(), *_options.leastRecall));
            return false;
        }
        if (_options.mostFalse && _total.falseGestures() > *_options.mostFalse) {
            complain("score",
                     fmt::format("{} false gestures are more than {}", _total.falseGestures(), *_options.mostFalse));
            return false;
        }
        return true;
    }

    const Options& _options;
    ScoreTotal _total;
    std::vector<Page::Case> _cases;
    Page::PictureBounds _bounds;
};

// FNV-1a over what a run is about.
std::uint64_t runOf(const std::vector<std::string>& files, const std::vector<Setting>& settings) {
    std::uint64_t hash = 0xcbf29ce484222325;
    const auto add = [&hash](std::string_view text) {
        for (const char c : text)
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        hash = (hash ^ 0xFF) * 0x100000001b3; // the end of a text
    };
    for (const std::string& file : files)
        add(file);
    for (const Setting& setting : settings) {
        add(setting.key);
        add(JSON::text(setting.value.get()));
    }
    return hash;
}

int scoreRecordings(const Options& options) {
    warnOfDoubtfulSettings(options.settings);
    preparePage(options.page);
    std::vector<std::string> files;
    const int found = findRecordings(options.paths, files);
    std::optional<Shard> shard = options.shard;
    if (shard) {
        shard->run = runOf(files, options.settings);
        std::size_t place = 0;
        std::erase_if(files, [&](const std::string&) { return place++ % shard->of != shard->number - 1; });
    }
    Output output(options);
    const int handled = handleInOrder(
        files, options.jobs, "scoring",
        [&](const std::string& file) { return score(options, file, output.picturesWanted()); },
        [&](const std::string&, Scored scored) { output.add(std::move(scored)); });
    return std::max({found, handled, output.finish(shard)});
}

struct ReadShard {
    std::vector<RecordingScore> recordings;
    Shard shard;
};

// Returns none for a result that is not whole, which it reports.
std::optional<ReadShard> readShard(const std::string& file) {
    ReadShard read;
    ScoreReader reader;
    forEachLine(file, [&](std::string_view line) {
        if (auto recording = reader.read(line))
            read.recordings.push_back(*std::move(recording));
    });
    if (const std::string missing = reader.missing(); !missing.empty()) {
        complain(file, missing);
        return std::nullopt;
    }
    read.shard = *reader.shard();
    return read;
}

// Sorts the shards by their numbers. Returns whether they are all shards of one run.
bool areAllOfOneRun(std::vector<ReadShard>& shards) {
    std::ranges::sort(shards, {}, [](const ReadShard& each) { return each.shard.number; });
    for (std::size_t i = 0; i < shards.size(); ++i) {
        const Shard& shard = shards[i].shard;
        if (shard.run != shards.front().shard.run || shard.of != shards.size() || shard.number != i + 1)
            return false;
    }
    return true;
}

int mergeShards(const Options& options) {
    preparePage(options.page);
    std::vector<ReadShard> shards;
    const int status = forEachFile(options.paths, [&shards](const std::string& file) {
        if (auto shard = readShard(file))
            shards.push_back(*std::move(shard));
    });
    if (status != 0)
        return status;
    if (shards.size() < options.paths.size())
        return kWrongUsage; // already reported
    if (!areAllOfOneRun(shards)) {
        complain("--merge", fmt::format("all {} shards of one run are wanted", shards.front().shard.of));
        return kWrongUsage;
    }
    Output output(options);
    for (std::size_t i = 0; i < shards.front().recordings.size(); ++i) {
        for (const ReadShard& shard : shards) {
            if (i < shard.recordings.size())
                output.add({.score = shard.recordings[i]});
        }
    }
    return output.finish(std::nullopt);
}

Shard parseShard(const std::string& text) {
    Shard shard;
    const auto slash = text.find('/');
    const auto parse = [](std::string_view digits, std::size_t& number) {
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        return error == std::errc() && end == digits.data() + digits.size();
    };
    const bool isRead = slash != std::string::npos && parse(std::string_view(text).substr(0, slash), shard.number) &&
                        parse(std::string_view(text).substr(slash + 1), shard.of);
    if (!isRead || shard.number < 1 || shard.number > shard.of)
        throw CLI::ValidationError("--shard", "K/N is wanted, K from 1 to N");
    return shard;
}

void addBounds(App& app, Options& options) {
    app.add_option("--min-recall", options.leastRecall,
                   "Exit status 1 if less than this share of what was meant is found")
        ->check(CLI::Range(0.0, 1.0))
        ->type_name("R");
    app.add_option("--max-false", options.mostFalse, "Exit status 1 if there are more false and stray gestures")
        ->type_name("N");
}

// What would have no effect on results that are there is wrong usage.
void addShards(App& app, Options& options, CLI::Option* settings, CLI::Option* jobs) {
    CLI::Option* shard = app.add_option_function<std::string>(
        "--shard", [&options](const std::string& text) { options.shard = parseShard(text); },
        "Only every N-th recording, from the K-th on; for batch engines");
    shard->type_name("K/N");
    app.add_flag("--merge", options.merge, "PATHs are the --jsonl results of all shards; print what one run would")
        ->excludes(shard)
        ->excludes(settings)
        ->excludes(jobs);
}

} // namespace

Command makeScoreCommand(App& program) {
    const auto options = std::make_shared<Options>();
    App* app = program.addCommand(
        "score", {"velto score recordings/", "velto score recordings/ --min-recall 0.98 --max-false 5"},
        "Compares the gestures of labelled recordings with what was meant: what was\n"
        "found, missed, wrong or false, and how long the decisions took.\n"
        "\n"
        "A page of --html has pictures of the first 500 faults; with --merge, where no\n"
        "recording is at hand, it has none.");
    addRecordings(*app, options->paths);
    CLI::Option* settings = addPlayedSettings(*app, options->settings);
    CLI::Option* jobs = addJobs(*app, options->jobs);
    addBounds(*app, *options);
    addShards(*app, *options, settings, jobs);
    app->add_flag("--jsonl", options->jsonl, "JSON Lines");
    addPage(*app, options->page);
    return {app, [options] { return options->merge ? mergeShards(*options) : scoreRecordings(*options); }};
}

} // namespace VeltoTouch::Velto
