#include "Velto/Commands/ScoreShards.h"

#include "Platform/JSON.h"
#include "Velto/Commands/Command.h"
#include "Velto/Options/App.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {

using namespace Analysis;

namespace {

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

} // namespace

Shard parseShard(const std::string& text) {
    const std::size_t slash = std::min(text.find('/'), text.size());
    const auto number = numberIn<std::size_t>(text.substr(0, slash));
    const auto of = numberIn<std::size_t>(text.substr(std::min(slash + 1, text.size())));
    if (!number || !of || *number < 1 || *number > *of)
        throw CLI::ValidationError("--shard", "K/N is wanted, K from 1 to N");
    return {.number = *number, .of = *of};
}

// FNV-1a.
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

int readShards(const std::vector<std::string>& files, std::vector<RecordingScore>& recordings) {
    std::vector<ReadShard> shards;
    const int status = forEachFile(files, [&shards](const std::string& file) {
        if (auto shard = readShard(file))
            shards.push_back(*std::move(shard));
    });
    if (status != 0)
        return status;
    if (shards.size() < files.size())
        return kWrongUsage; // already reported
    if (!areAllOfOneRun(shards)) {
        complain("--merge", fmt::format("all {} shards of one run are wanted", shards.front().shard.of));
        return kWrongUsage;
    }
    for (std::size_t i = 0; i < shards.front().recordings.size(); ++i) {
        for (ReadShard& shard : shards) {
            if (i < shard.recordings.size())
                recordings.push_back(std::move(shard.recordings[i]));
        }
    }
    return 0;
}

} // namespace VeltoTouch::Velto
