#include "Plugin/Recording/Damage.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Tests/Support/Frames.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <numeric>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::SizeIs;

std::vector<std::string> framesOf(const std::string& text) {
    auto frames = textsOf(recordingFrom(text).frames());
    EXPECT_EQ(textsOf(recordingFrom(withFurtherMember(text)).frames()), frames);
    return frames;
}

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

TEST(ContainerReaderTest, RefusesEveryBadContainerWithWhatIsWrongAndWhere) {
    const std::string byMigration = "Migration: ";
    std::string message;
    int count = 0;
    std::ifstream file(VELTO_RECORDINGS "/bad-containers.txt");
    for (std::string line; std::getline(file, line);) {
        const auto begin = line.find_first_not_of(' ');
        if (begin == std::string::npos || line[begin] == '#')
            continue;
        if (begin == 0) {
            message = line;
            continue;
        }
        const auto end = std::min(line.find("  (", begin), line.size());
        std::string text = line.substr(begin, end - begin);
        if (text[0] == '$') // the beginning of a container
            text.replace(0, 2, R"({"Version":)"s + text[1] + (text[1] == '0' ? R"(,"Reports":[)" : R"(,"Frames":[)"));
        const bool isMigrations = message.starts_with(byMigration);
        expectRefused(text, isMigrations ? message.substr(byMigration.size()) : message, line.substr(end),
                      isMigrations);
        ++count;
    }
    EXPECT_GT(count, 50);
    expectRefused(version2("{\"Type\":\"InputReport\",\"Timestamp\":5,\"Data\":\"01 \xFF\"}"), "invalid container",
                  "  (byte 70: invalid UTF-8 in a string)", true);
    expectRefused(version2("{\"Type\":\"InputReport\",\"Timestamp\":5,\"Data\":\"01\nff\"}"), "invalid container",
                  "  (byte 69: control character in a string)", true);
    EXPECT_EQ(refusalOf<std::invalid_argument>([] { return PipelineRecording(nullptr); }), "json not supplied");
}

TEST(ContainerReaderTest, ReadsFramesOfEveryKindInFileOrderAndIgnoresOtherKeys) {
    EXPECT_THAT(framesOf(R"({"Frames":[
                    {"Type":"State","Timestamp":9,"Key":"a","Value":{"b":[1,2.5,"c",true]},"Data":"no report"},
                    {"Type":"InputReport","Timestamp":5,"Data":"01 ff ","Key":"no key","Value":1,"Report":"02 "},
                    {"Type":"InputReport","Timestamp":6,"Data":"1 0x0a\u0009FF zz 02"},
                    {"Type":"Metadata","Timestamp":7,"Key":"\u0061\u00e9","Value":"text","Other":null},
                    {"Type":"State","Timestamp":1,"Key":"k","Value":null},
                    {"Type":"Metadata","Timestamp":2,"Key":"m"}],
                    "Maker":"someone","Version":2})"),
                ElementsAre(R"(a={"b":[1,2.5,"c",true]}@9)", "[01 ff]@5", "[01 0a ff]@6", "a\u00e9:\"text\"@7",
                            "k=null@1", "m:@2"));
}

TEST(ContainerReaderTest, OfEqualKeysTheLastCounts) {
    EXPECT_THAT(framesOf(R"({"Version":7,"Frames":[{}],"Version":2,
                             "Frames":[{"Type":"Reset","Timestamp":1,"Type":"State","Timestamp":2,
                                        "Key":"a","Key":"b","Value":1,"Value":null}]})"),
                ElementsAre("b=null@2"));
    EXPECT_THAT(framesOf(version1(R"({"Type":"InputReport","Timestamp":1,"Report":"01","Report":"02"})")),
                ElementsAre("[02]@1"));
}

TEST(ContainerReaderTest, ATimestampIsAnyNumberReadAsUnsigned64Bits) {
    const std::string largest = "18446744073709551615";
    for (const auto& [number, expected] :
         std::vector<std::pair<std::string, std::string>>{{"1.9", "1"},
                                                          {"-0.9", "0"},
                                                          {"-1", largest},
                                                          {"-1.5", largest},
                                                          {largest, largest},
                                                          {"9007199254740993", "9007199254740993"},
                                                          {"1e3", "1000"},
                                                          {"1e30", largest},
                                                          {"18446744073709551616", largest},
                                                          {"-9223372036854775809", "9223372036854775808"},
                                                          {"-1e30", "9223372036854775808"}})
        EXPECT_THAT(framesOf(version2(R"({"Type":"InputReport","Data":"","Timestamp":)" + number + "}")),
                    ElementsAre("[]@" + expected));
}

TEST(ContainerReaderTest, AnIntegerBeyond64BitsIsReadAnywhere) {
    EXPECT_THAT(framesOf(version2(R"({"Type":"State","Timestamp":1,"Key":"k","Other":123456789012345678901234,
                                      "Value":{"a":[18446744073709551616],"b":"18446744073709551616"}},
                                     {"Type":"InputReport","Timestamp":18446744073709551616,"Data":"01 ff "})")),
                ElementsAre(R"(k={"a":[18446744073709551616.0],"b":"18446744073709551616"}@1)",
                            "[01 ff]@18446744073709551615"));
    EXPECT_THAT(framesOf(version0(R"({"Timestamp":18446744073709551616,"ReportData":"01 ff "})")),
                ElementsAre("[01 ff]@18446744073709551615"));
}

TEST(ContainerReaderTest, TheSameContainerWrittenInAnotherWayReadsTheSame) {
    for (const std::string& text : std::vector<std::string>{
             R"({"Frames":[{"Data":"01 ff ","Timestamp":5,"Type":"InputReport"}],"Version":2})",
             std::string(" {\t\"Version\" : 2 ,\r\n\"Frames\" : [ { \"Type\" : \"InputReport\" , ") +
                 "\"Timestamp\" : 5 , \"Data\" : \"01 FF \" } ] }\n",
             R"({"Version":2.0,"Frames":[{"Type":"InputReport","Timestamp":5e0,"Data":"01 ff "}]})",
             version2(R"({"\u0054ype":"Input\u0052eport","Timestamp":5,"Data":"\u00301\tff"})"),
             version2(R"({"Type":"InputReport","Timestamp":5,"Data":"01 ff ","x":"\"}],[{"})"),
             version2(R"({"Type":"State","Type":"InputReport","Timestamp":5,"Data":"1","Data":"01 ff "})"),
             version2(R"({"Type":"State"}],"Frames":[{"Type":"InputReport","Timestamp":5,"Data":"01 ff "})"),
         })
        EXPECT_THAT(textsOf(recordingFrom(text).frames()), ElementsAre("[01 ff]@5")) << text;
}

TEST(ContainerReaderTest, ReadsOlderVersionsLikeTheCurrentOne) {
    EXPECT_THAT(framesOf(version1(R"({"Type":"InputReport","Timestamp":5,"Report":"01 ff "},
                                     {"Type":"State","Timestamp":4,"Key":"k","Value":null},
                                     {"Type":"Metadata","Timestamp":6,"Key":"m","Report":"02 "})")),
                ElementsAre("[01 ff]@5", "k=null@4", "m:@6"));
    EXPECT_THAT(framesOf(version0(R"({"Timestamp":5,"ReportData":"01 ff "},{"Timestamp":4,"ReportData":""})")),
                ElementsAre("[01 ff]@5", "[]@4"));
    EXPECT_THAT(framesOf(R"({"Version":0.9,"Frames":[7]})"), ElementsAre());
}

TEST(ContainerReaderTest, WhatIsReadHasNoTargetNoBoundAndNoPlayback) {
    PipelineRecording recording = recordingFrom(version2(R"({"Type":"State","Timestamp":1,"Key":"k"})"));
    EXPECT_EQ(recording.pipeline, nullptr);
    EXPECT_FALSE(recording.playCanContinue());
    for (int i = 0; i < 3; ++i)
        recording.setState(2, "k", nullptr);
    EXPECT_THAT(recording.frames(), SizeIs(4));
}

TEST(MigrationTest, ACurrentContainerIsReturnedItselfAndOlderOnesBecomeCurrent) {
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

TEST(ContainerWriterTest, WritesCompactTextOfTheCurrentVersionWithoutFramesOfNoKnownType) {
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

TEST(ContainerWriterTest, WhatIsReadBackIsWhatWasWrittenInTheOrderOfTime) {
    std::vector<std::uint8_t> everyByte(256);
    std::iota(everyByte.begin(), everyByte.end(), std::uint8_t{0});
    PipelineRecording recording =
        recordingOf({setting("Algs.ActivationThreshold", Number::withFloat(0.1F), 30),
                     reportFrame(everyByte, 9007199254740993), metadata("Accel", json(R"({"X":-1,"Y":1e300})"), 30),
                     setting("k", Number::withUnsignedLong(std::numeric_limits<std::uint64_t>::max()), 20),
                     setting("k", Number::withLongLong(std::numeric_limits<std::int64_t>::min()), 40),
                     setting("\" \\ / \b\f\n\r\t \x01\x7F \0 \u00e9 \u20ac \U0001F600"s, nullptr, 10),
                     setting("", nullptr, 11), metadata("m", makeRef<Null>(), ~std::uint64_t{0})});
    const auto read = writtenAndRead(recording);
    recording.sortFrames();
    EXPECT_EQ(read, textsOf(recording.frames()));
    EXPECT_THAT(writtenAndRead(recordingOf({setting("a\xFF-", nullptr)})), ElementsAre("a\uFFFD-=@0"));
}

TEST(ContainerWriterTest, TrimsToTheBoundAndSortsTheRecordingItself) {
    PipelineRecording recording;
    recording.setMaxFrameCount(2);
    for (const Frame& frame : {reportFrame({1}, 9), reportFrame({2}, 8), reportFrame({3}, 7)})
        recording.appendFrame(frame);
    EXPECT_TRUE(recording.json());
    EXPECT_THAT(textsOf(recording.frames()), ElementsAre("[03]@7", "[02]@8"));

    recording.setMaxFrameCount(0);
    recording.appendFrame(reportFrame({4}, 1));
    EXPECT_THAT(writtenAndRead(recording), ElementsAre("[04]@1", "[03]@7", "[02]@8")) << "no bound, no trim";
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
