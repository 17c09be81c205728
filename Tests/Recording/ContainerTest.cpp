#include "Plugin/Recording/Damage.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Tests/Support/Frames.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <numeric>

#include <fmt/ranges.h>
#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

PipelineRecording recordingOf(std::initializer_list<Frame> frames) {
    PipelineRecording recording;
    for (const Frame& frame : frames)
        recording.appendFrame(frame);
    return recording;
}

std::string written(PipelineRecording recording) { return std::string(recording.json()->bytes()); }

std::vector<std::string> writtenAndRead(PipelineRecording recording) {
    return textsOf(PipelineRecording(recording.json().get()).frames());
}

// What the call throws: its message, and behind it the place of a damage in brackets.
template <class Error, class Call>
std::string refusalOf(Call call) {
    try {
        (void)call();
        return "none";
    } catch (const Error& error) {
        const std::string* place = placeOf(error);
        return place != nullptr ? error.what() + "  ("s + *place + ")" : error.what();
    }
}

// By the reader in each of its ways, and by the migration where the fault is its business. It sees no text, and so
// knows no byte of it.
void expectRefused(const std::string& text, const std::string& message, const std::string& place, bool byMigration) {
    SCOPED_TRACE(text);
    const bool isPlaceInText = place.starts_with("  (byte");
    const auto migrateIt = [&] { return PipelineRecording::migrateSerializedContainer(json(text)); };
    EXPECT_EQ(refusalOf<std::invalid_argument>(migrateIt),
              byMigration ? message + (isPlaceInText ? "" : place) : "none");
    const auto readingRefusal = [&](const std::string& container) {
        const auto readIt = [&] { return recordingFrom(container); };
        return byMigration ? refusalOf<std::runtime_error>(readIt) : refusalOf<std::invalid_argument>(readIt);
    };
    const std::string told = (byMigration ? "migrateSerializedContainer failed: " : "") + message;
    EXPECT_EQ(readingRefusal(text), told + place);
    if (!isPlaceInText && text.starts_with('{')) {
        EXPECT_EQ(readingRefusal(withFurtherMember(text)), told + place);
    }
}

// A container of a file of such, and the heading that it stands under.
struct Sample {
    std::string heading, container;
    std::string place; // of a damage, behind the container
};

std::vector<Sample> samplesIn(const char* path) {
    std::vector<Sample> samples;
    std::string heading;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const auto begin = line.find_first_not_of(' ');
        if (begin == std::string::npos || line[begin] == '#')
            continue;
        if (begin == 0) {
            heading = line;
            continue;
        }
        const auto end = std::min(line.find("  (", begin), line.size());
        std::string text = line.substr(begin, end - begin);
        if (text[0] == '$') // the beginning of a container
            text.replace(0, 2, R"({"Version":)"s + text[1] + (text[1] == '0' ? R"(,"Reports":[)" : R"(,"Frames":[)"));
        samples.push_back({heading, text, line.substr(end)});
    }
    return samples;
}

TEST(ContainerReaderTest, RefusesBadContainersWithWhatIsWrongAndWhere) {
    const auto samples = samplesIn(VELTO_RECORDINGS "/bad-containers.txt");
    EXPECT_GT(samples.size(), 50U);
    for (const auto& [heading, container, place] : samples) {
        constexpr std::string_view kByMigration = "Migration: ";
        const bool isMigrations = heading.starts_with(kByMigration);
        expectRefused(container, heading.substr(isMigrations ? kByMigration.size() : 0), place, isMigrations);
    }
    const std::string beginning = R"({"Version":2,"Frames":[{"Type":"InputReport","Timestamp":5,"Data":"01)";
    expectRefused(beginning + " \xFF", "invalid container", "  (byte 70: invalid UTF-8 in a string)", true);
    expectRefused(beginning + "\nff", "invalid container", "  (byte 69: control character in a string)", true);
    EXPECT_EQ(refusalOf<std::invalid_argument>([] { return PipelineRecording(nullptr); }), "json not supplied");
}

TEST(ContainerReaderTest, ReadsOddContainersInEachOfItsWays) {
    const auto framesOf = [](const std::string& container) {
        const auto texts = textsOf(recordingFrom(container).frames());
        return texts.empty() ? "no frames" : fmt::format("{}", fmt::join(texts, " "));
    };
    const auto samples = samplesIn(VELTO_RECORDINGS "/odd-containers.txt");
    EXPECT_GT(samples.size(), 20U);
    for (const auto& [frames, container, place] : samples) {
        EXPECT_EQ(framesOf(container), frames) << container;
        EXPECT_EQ(framesOf(withFurtherMember(container)), frames) << container;
    }
    EXPECT_EQ(framesOf("{\t\"Version\":2,\r\n\"Frames\":[]}\n"), "no frames");
}

TEST(MigrationTest, OlderContainersBecomeCurrentAndCurrentOnesStay) {
    const Ref<Value> current = json(R"({"Version":2,"Frames":{"Type":7},"Other":1})");
    EXPECT_EQ(PipelineRecording::migrateSerializedContainer(current), current) << "whatever it holds";
    for (const auto& [old, migrated] : std::vector<std::pair<const char*, const char*>>{
             {R"({"Version":1,"Maker":"dropped","Frames":[
                  {"Type":"InputReport","Timestamp":"kept","Report":[1],"Data":"old","Other":null},
                  {"Type":"State","Report":"kept","Key":7},
                  {"Type":"Reset"}]})",
              R"([{"Data":[1],"Other":null,"Timestamp":"kept","Type":"InputReport"},)"
              R"({"Key":7,"Report":"kept","Type":"State"},{"Type":"Reset"}])"},
             {R"({"Version":0,"Maker":"dropped","Frames":[7],"Reports":[
                  {"Timestamp":1.5,"ReportData":"01 ","Other":1},{"Timestamp":null,"ReportData":null}]})",
              R"([{"Data":"01 ","Timestamp":1.5,"Type":"InputReport"},)"
              R"({"Data":null,"Timestamp":null,"Type":"InputReport"}])"},
             {R"({"Version":1})", "[]"},
             {R"({"Version":0})", "[]"},
         })
        EXPECT_EQ(JSON::text(PipelineRecording::migrateSerializedContainer(json(old)).get()),
                  std::string(R"({"Frames":)").append(migrated).append(R"(,"Version":2})"));
}

TEST(ContainerWriterTest, WritesCompactTextWithoutFramesOfUnknownType) {
    Frame unknown = setting("k", nullptr);
    unknown.type = static_cast<Frame::Type>(3);
    EXPECT_EQ(written(recordingOf({unknown})), R"({"Frames":[],"Version":2})");
    EXPECT_EQ(written(recordingOf({unknown, reportFrame({0x01, 0xFF}, 5), setting("k", json(R"({"b":1.0,"a":[1]})"), 6),
                                   setting("k", nullptr, 7), metadata("m", json("null"), 8),
                                   metadata("m", makeRef<Data>("x"), 9), reportFrame({}, 10)})),
              R"({"Frames":[{"Data":"01 ff ","Timestamp":5,"Type":"InputReport"},)"
              R"({"Key":"k","Timestamp":6,"Type":"State","Value":{"a":[1],"b":1.0}},)"
              R"({"Key":"k","Timestamp":7,"Type":"State"},)"
              R"({"Key":"m","Timestamp":8,"Type":"Metadata","Value":null},)"
              R"({"Key":"m","Timestamp":9,"Type":"Metadata","Value":{"Unrepresentable":"data"}},)"
              R"({"Data":"","Timestamp":10,"Type":"InputReport"}],"Version":2})");
}

TEST(ContainerWriterTest, ReadsBackAsItWasWrittenInTheOrderOfTime) {
    std::vector<std::uint8_t> everyByte(256);
    std::iota(everyByte.begin(), everyByte.end(), std::uint8_t{0});
    PipelineRecording recording =
        recordingOf({setting("f", Number::withFloat(0.1F), 30), reportFrame(everyByte, 9007199254740993),
                     setting("k", Number::withLongLong(std::numeric_limits<std::int64_t>::min()), 20),
                     setting("\" \\ / \b\f\n\r\t \x01\x7F \0 \u00e9 \u20ac \U0001F600"s, nullptr, 10),
                     metadata("m", makeRef<Null>(), ~std::uint64_t{0})});
    const auto read = writtenAndRead(recording);
    recording.sortFrames();
    EXPECT_EQ(read, textsOf(recording.frames()));
    EXPECT_THAT(writtenAndRead(recordingOf({setting("a\xFF-", nullptr)})), ElementsAre("a\uFFFD-=@0"));
}

TEST(ContainerWriterTest, AValueTooDeepForTheReaderCostsOnlyItself) {
    const auto nested = [](std::size_t depth, const char* inner) {
        return std::string(depth, '[') + inner + std::string(depth, ']');
    };
    const std::string deepest = nested(1020, "1");
    const std::string deepestEmpty = nested(1021, "");
    EXPECT_THAT(writtenAndRead(recordingOf({setting("k", json(deepest)), setting("k", json(deepestEmpty)),
                                            metadata("m", json(nested(1021, "1"))),
                                            metadata("m", json(nested(1022, ""))), reportFrame({1})})),
                ElementsAre("k=" + deepest + "@0", "k=" + deepestEmpty + "@0", R"(m:{"Unrepresentable":"depth"}@0)",
                            R"(m:{"Unrepresentable":"depth"}@0)", "[01]@0"));
}

} // namespace
} // namespace VeltoTouch::Tests
