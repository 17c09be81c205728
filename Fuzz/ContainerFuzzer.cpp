#include "Fuzz/Require.h"
#include "Plugin/Recording/Damage.h"
#include "Plugin/Recording/JSONDocument.h"
#include "Tests/Support/Frames.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

// Arbitrary bytes as a recording container. Whatever the reader makes of them, the migration of the parsed text must
// come to the same verdict by its own way, and what is read must survive being written and read again.

using namespace VeltoTouch;

namespace {

constexpr std::string_view kMigrationFailed = "migrateSerializedContainer failed: ";

// What came of reading: the frames as text, or the complaint and its place.
struct Reading {
    std::vector<std::string> frames;
    std::string complaint;
    std::string place;
    std::optional<PipelineRecording> recording;

    bool operator==(const Reading& other) const {
        return frames == other.frames && complaint == other.complaint && place == other.place;
    }
};

std::string placeIn(const std::exception& error) {
    const std::string* const place = placeOf(error);
    return place != nullptr ? *place : "";
}

Reading read(const Data& text) {
    Reading reading;
    try {
        reading.recording.emplace(&text);
        reading.frames = Tests::textsOf(reading.recording->frames());
    } catch (const std::invalid_argument& error) {
        reading.complaint = error.what();
        reading.place = placeIn(error);
        require(!reading.complaint.starts_with(kMigrationFailed));
    } catch (const std::runtime_error& error) {
        reading.complaint = error.what();
        reading.place = placeIn(error);
        require(reading.complaint.starts_with(kMigrationFailed));
    }
    require(reading.recording.has_value() == reading.complaint.empty());
    return reading;
}

Reading readOtherwise(const std::string& text) { return read(*makeRef<Data>(Tests::withFurtherMember(text))); }

// The reader names the list of a container as it was before the migration.
Reading asMigrated(Reading reading) {
    constexpr std::string_view kOldName = "Reports";
    if (reading.place.starts_with(kOldName))
        reading.place.replace(0, kOldName.size(), "Frames");
    return reading;
}

// The migration does not see the text; the place of a fault in it is the parser's.
void requireThatMigrationAgrees(const Data& text, const Reading& reading) {
    const JSON::Document document(text);
    const auto& fault = document.fault();
    require(fault.has_value() != document.root().isPresent());
    Ref<Value> migrated;
    try {
        migrated = PipelineRecording::migrateSerializedContainer(document.root().value());
    } catch (const std::invalid_argument& error) {
        require(reading.complaint == std::string(kMigrationFailed).append(error.what()));
        require(reading.place == (fault ? fmt::format("byte {}: {}", fault->byte, fault->cause) : placeIn(error)));
        return;
    }
    require(readOtherwise(JSON::text(migrated.get())) == asMigrated(reading));
}

void requireThatWritingKeeps(PipelineRecording recording) {
    const Ref<Data> text = PipelineRecording(recording).json();
    recording.sortFrames();
    Reading again = read(*text);
    require(again.recording && again.frames == Tests::textsOf(recording.frames()));
    require(readOtherwise(std::string(text->bytes())) == again);
    require(again.recording->json()->bytes() == text->bytes());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const auto text = makeRef<Data>(std::string(bytes, bytes + size));
    const Reading reading = read(*text);
    requireThatMigrationAgrees(*text, reading);
    if (reading.recording)
        requireThatWritingKeeps(*reading.recording);
    return 0;
}
