#include "Fuzz/Require.h"
#include "Tests/Support/Frames.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Arbitrary bytes as a recording container. Whatever the reader makes of them, the migration of the parsed text must
// come to the same verdict by its own way, and what is read must survive being written and read again.

using namespace VeltoTouch;

namespace {

constexpr std::string_view kMigrationFailed = "migrateSerializedContainer failed: ";

// What came of reading: the frames as text, or the complaint.
struct Reading {
    std::vector<std::string> frames;
    std::string complaint;
    std::optional<PipelineRecording> recording;

    bool operator==(const Reading& other) const { return frames == other.frames && complaint == other.complaint; }
};

Reading read(const Data& text) {
    Reading reading;
    try {
        reading.recording.emplace(&text);
        reading.frames = Tests::textsOf(reading.recording->frames());
    } catch (const std::invalid_argument& error) {
        reading.complaint = error.what();
        require(!reading.complaint.starts_with(kMigrationFailed));
    } catch (const std::runtime_error& error) {
        reading.complaint = error.what();
        require(reading.complaint.starts_with(kMigrationFailed));
    }
    require(reading.recording.has_value() == reading.complaint.empty());
    return reading;
}

Reading readOtherwise(const std::string& text) { return read(*makeRef<Data>(Tests::withFurtherMember(text))); }

void requireThatMigrationAgrees(std::string_view text, const Reading& reading) {
    Ref<Value> migrated;
    try {
        migrated = PipelineRecording::migrateSerializedContainer(JSON::parse(text));
    } catch (const std::invalid_argument& error) {
        require(reading.complaint == std::string(kMigrationFailed).append(error.what()));
        return;
    }
    require(readOtherwise(JSON::text(migrated.get())) == reading);
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
    requireThatMigrationAgrees(text->bytes(), reading);
    if (reading.recording)
        requireThatWritingKeeps(*reading.recording);
    return 0;
}
