#include "Fuzz/Require.h"
#include "Platform/JSON.h"
#include "Recording/PipelineRecording.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

// Arbitrary bytes as a recording container. Whatever the reader makes of them, the migration of the parsed text must
// come to the same verdict by its own way, and what is read must survive being written and read again.

using namespace VeltoTouch;

namespace {

constexpr std::string_view kMigrationFailed = "migrateSerializedContainer failed: ";

struct Reading {
    std::optional<PipelineRecording> recording;
    std::string complaint; // where there is no recording
};

Reading read(const Data& text) {
    Reading reading;
    try {
        reading.recording.emplace(&text);
    } catch (const std::invalid_argument& error) {
        reading.complaint = error.what();
        require(!reading.complaint.starts_with(kMigrationFailed));
    } catch (const std::runtime_error& error) {
        reading.complaint = error.what();
        require(reading.complaint.starts_with(kMigrationFailed));
    }
    require(reading.recording || !reading.complaint.empty());
    return reading;
}

bool isSameValue(const Value* a, const Value* b) {
    if (a == nullptr || b == nullptr)
        return a == b;
    return CFEqual(a, b) && JSON::text(a) == JSON::text(b);
}

bool isSameFrame(const Frame& a, const Frame& b) {
    return a.type == b.type && a.timestampNs == b.timestampNs && a.key == b.key && a.report == b.report &&
           isSameValue(a.value.get(), b.value.get());
}

void requireSameFrames(const PipelineRecording& a, const PipelineRecording& b) {
    require(std::ranges::equal(a.frames(), b.frames(), isSameFrame));
}

// The same container with a further member: what is usual is scanned, all else is parsed.
Reading readOtherwise(std::string text) { return read(*makeRef<Data>(text.insert(1, R"("Further":0,)"))); }

void requireThatMigrationAgrees(std::string_view text, const Reading& reading) {
    Ref<Value> migrated;
    try {
        migrated = PipelineRecording::migrateSerializedContainer(JSON::parse(text));
    } catch (const std::invalid_argument& error) {
        require(reading.complaint == std::string(kMigrationFailed).append(error.what()));
        return;
    }
    const Reading again = readOtherwise(JSON::text(migrated.get()));
    require(again.complaint == reading.complaint);
    if (again.recording)
        requireSameFrames(*again.recording, *reading.recording);
}

void requireThatWritingKeeps(const PipelineRecording& recording) {
    PipelineRecording sorted = recording;
    sorted.sortFrames();
    const Ref<Data> text = PipelineRecording(recording).json();
    Reading again = read(*text);
    require(again.recording.has_value());
    requireSameFrames(*again.recording, sorted);
    requireSameFrames(*readOtherwise(std::string(text->bytes())).recording, sorted);
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
