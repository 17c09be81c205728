#include "Recording/PipelineRecording.h"

#include "Tests/Support/BadContainers.h"
#include "Tests/Support/Frames.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using testing::ThrowsMessage;

PipelineRecording read(std::string_view text) { return PipelineRecording(makeRef<Data>(std::string(text)).get()); }

// The same container with a further member, which sends it another way through the reader: what is usual is scanned,
// all else is parsed.
std::string withFurtherMember(std::string text) { return text.insert(1, R"("Further":0,)"); }

std::vector<std::string> framesOf(const std::string& text) {
    auto frames = textsOf(read(text).frames());
    EXPECT_EQ(textsOf(read(withFurtherMember(text)).frames()), frames);
    return frames;
}

TEST(ContainerReaderTest, RefusesEveryBadContainerWithWhatIsWrong) {
    for (const BadContainer& bad : badContainers()) {
        SCOPED_TRACE(bad.name);
        const std::string wrapped = std::string("migrateSerializedContainer failed: ").append(bad.message);
        for (const std::string& text : {bad.text, bad.text.starts_with("{") ? withFurtherMember(bad.text) : bad.text}) {
            const auto readIt = [&text] { return read(text); };
            if (bad.fromMigration)
                EXPECT_THAT(readIt, ThrowsMessage<std::runtime_error>(wrapped));
            else
                EXPECT_THAT(readIt, ThrowsMessage<std::invalid_argument>(bad.message));
        }
        const auto migrateIt = [&bad] { return PipelineRecording::migrateSerializedContainer(json(bad.text)); };
        if (bad.fromMigration)
            EXPECT_THAT(migrateIt, ThrowsMessage<std::invalid_argument>(bad.message));
        else
            EXPECT_TRUE(migrateIt()) << "none of the migration's business";
    }
    EXPECT_THAT([] { return PipelineRecording(nullptr); }, ThrowsMessage<std::invalid_argument>("json not supplied"));
}

TEST(ContainerReaderTest, ReadsFramesOfEveryKindInFileOrderAndIgnoresOtherKeys) {
    EXPECT_THAT(framesOf(R"({"Frames":[
                    {"Type":"State","Timestamp":9,"Key":"a","Value":{"b":[1,2.5,"c",true]},"Data":"no report"},
                    {"Type":"InputReport","Timestamp":5,"Data":"01 ff ","Key":"no key","Value":1,"Report":"02 "},
                    {"Type":"InputReport","Timestamp":6,"Data":"1 0x0a\u0009FF zz 02"},
                    {"Type":"Metadata","Timestamp":7,"Key":"\u0061\u00e9","Value":"text","Other":null}],
                    "Maker":"someone","Version":2})"),
                ElementsAre(R"(a={"b":[1,2.5,"c",true]}@9)", "[01 ff]@5", "[01 0a ff]@6", "a\u00e9:\"text\"@7"));
}

TEST(ContainerReaderTest, ANullValueIsAValueAndAnAbsentOneIsNil) {
    EXPECT_THAT(framesOf(version2(R"({"Type":"State","Timestamp":1,"Key":"k","Value":null},
                                     {"Type":"Metadata","Timestamp":2,"Key":"m"})")),
                ElementsAre("k=null@1", "m:@2"));
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
    struct Row {
        std::string written;
        std::string read;
    };
    for (const auto& [written, expected] :
         {Row{"1.9", "1"}, Row{"-0.9", "0"}, Row{"-1", largest}, Row{"-1.5", largest}, Row{largest, largest},
          Row{"9007199254740993", "9007199254740993"}, Row{"1e3", "1000"}, Row{"1e30", largest},
          Row{"-1e30", "9223372036854775808"}})
        EXPECT_THAT(framesOf(version2(R"({"Type":"InputReport","Data":"","Timestamp":)" + written + "}")),
                    ElementsAre("[]@" + expected));
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
        EXPECT_THAT(textsOf(read(text).frames()), ElementsAre("[01 ff]@5")) << text;
}

TEST(ContainerReaderTest, WhatOnlyResemblesAContainerIsNone) {
    const std::string report = R"({"Type":"InputReport","Timestamp":5,"Data":"01 ff "})";
    for (const std::string& frames : std::vector<std::string>{
             report + ",",
             report + report,
             report + ",,",
             report + "}",
             report.substr(1),
             "{\"Type\":\"InputReport\",\"Timestamp\":5,\"Data\":\"01 \xFF\"}",
             "{\"Type\":\"InputReport\",\"Timestamp\":5,\"Data\":\"01\nff\"}",
             R"({"Type":"InputReport","Timestamp":05,"Data":"01 "})",
             R"({"Type":"InputReport","Timestamp":+5,"Data":"01 "})",
             R"({"Type":"InputReport","Timestamp":5.,"Data":"01 "})",
             R"({"Type":"InputReport","Timestamp":18446744073709551616,"Data":"01 "})",
             R"({"Type":"InputReport","Timestamp":5,"Data":"01 ",})",
             R"({"Type":"InputReport","Timestamp":5,"Data":"01" "02"})",
             R"({"Type":"InputReport","Timestamp":5 "Data":"01 "})",
             R"({"Type":"InputReport","Timestamp":5,"Data":'01 '})",
             R"({"Type":"State","Timestamp":5,"Key":"k","Value":[}])",
         })
        EXPECT_THAT([&] { return read(version2(frames)); },
                    ThrowsMessage<std::runtime_error>("migrateSerializedContainer failed: invalid container"))
            << frames;
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
    PipelineRecording recording = read(version2(R"({"Type":"State","Timestamp":1,"Key":"k"})"));
    EXPECT_EQ(recording.pipeline, nullptr);
    EXPECT_FALSE(recording.playCanContinue());
    for (int i = 0; i < 3; ++i)
        recording.setState(2, "k", nullptr);
    EXPECT_THAT(recording.frames(), SizeIs(4));
}

} // namespace
} // namespace VeltoTouch::Tests
