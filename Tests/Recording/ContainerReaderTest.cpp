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

class BadContainerTest : public testing::TestWithParam<BadContainer> {};

TEST_P(BadContainerTest, IsRefusedByTheReaderWithWhatIsWrong) {
    const std::string text = GetParam().text;
    const std::string message = GetParam().message;
    for (const std::string& form : {text, text.starts_with("{\"") ? withFurtherMember(text) : text}) {
        const auto readIt = [&form] { return read(form); };
        if (GetParam().fromMigration)
            EXPECT_THAT(readIt, ThrowsMessage<std::runtime_error>("migrateSerializedContainer failed: " + message));
        else
            EXPECT_THAT(readIt, ThrowsMessage<std::invalid_argument>(message));
    }
}

TEST_P(BadContainerTest, IsRefusedByTheMigrationOnlyWhenItIsTheMigrationsBusiness) {
    const auto migrateIt = [] { return PipelineRecording::migrateSerializedContainer(json(GetParam().text)); };
    if (GetParam().fromMigration)
        EXPECT_THAT(migrateIt, ThrowsMessage<std::invalid_argument>(GetParam().message));
    else
        EXPECT_TRUE(migrateIt());
}

INSTANTIATE_TEST_SUITE_P(Containers, BadContainerTest, testing::ValuesIn(kBadContainers),
                         [](const auto& row) { return row.param.name; });

TEST(ContainerReaderTest, RefusesNull) {
    EXPECT_THAT([] { return PipelineRecording(nullptr); }, ThrowsMessage<std::invalid_argument>("json not supplied"));
}

TEST(ContainerReaderTest, ReadsFramesOfEveryKindInFileOrderAndIgnoresOtherKeys) {
    EXPECT_THAT(framesOf(R"({"Frames":[
                    {"Type":"State","Timestamp":9,"Key":"a","Value":{"b":[1,2.5,"c",true]},"Data":"no report"},
                    {"Type":"InputReport","Timestamp":5,"Data":"01 ff ","Key":"no key","Value":1,"Report":"02 "},
                    {"Type":"Metadata","Timestamp":7,"Key":"\u0061\u00e9","Value":"text","Other":null}],
                    "Maker":"someone","Version":2})"),
                ElementsAre(R"(a={"b":[1,2.5,"c",true]}@9)", "[01 ff]@5", "a\u00e9:\"text\"@7"));
    EXPECT_THAT(framesOf(R"({"Version":2,"Frames":[]})"), ElementsAre());
}

TEST(ContainerReaderTest, ANullValueIsAValueAndAnAbsentOneIsNil) {
    const PipelineRecording recording =
        read(R"({"Version":2,"Frames":[{"Type":"State","Timestamp":1,"Key":"k","Value":null},
                                       {"Type":"State","Timestamp":2,"Key":"k"},
                                       {"Type":"Metadata","Timestamp":3,"Key":"m","Value":null},
                                       {"Type":"Metadata","Timestamp":4,"Key":"m"}]})");
    EXPECT_THAT(textsOf(recording.frames()), ElementsAre("k=null@1", "k=@2", "m:null@3", "m:@4"));
}

TEST(ContainerReaderTest, OfEqualKeysTheLastCounts) {
    EXPECT_THAT(framesOf(R"({"Version":7,"Frames":[{}],"Version":2,
                             "Frames":[{"Type":"Reset","Timestamp":1,"Type":"State","Timestamp":2,
                                        "Key":"a","Key":"b","Value":1,"Value":null}]})"),
                ElementsAre("b=null@2"));
    EXPECT_THAT(
        framesOf(R"({"Version":1,"Frames":[{"Type":"InputReport","Timestamp":1,"Report":"01","Report":"02"}]})"),
        ElementsAre("[02]@1"));
}

TEST(ContainerReaderTest, ATimestampIsAnyNumberReadAsUnsigned64Bits) {
    struct Row {
        const char* written;
        std::uint64_t read;
    };
    constexpr std::uint64_t kLargest = ~std::uint64_t{0};
    for (const auto& [written, expected] :
         {Row{"0", 0}, Row{"1.9", 1}, Row{"-0.9", 0}, Row{"-1", kLargest}, Row{"-1.5", kLargest},
          Row{"18446744073709551615", kLargest}, Row{"9007199254740993", 9007199254740993}, Row{"1e3", 1000},
          Row{"1e30", kLargest}, Row{"-1e30", std::uint64_t{1} << 63U}}) {
        const std::string time = written;
        for (const std::string& container :
             {R"({"Version":2,"Frames":[{"Type":"InputReport","Data":"","Timestamp":)" + time + "}]}",
              R"({"Version":1,"Frames":[{"Type":"InputReport","Report":"","Timestamp":)" + time + "}]}",
              R"({"Version":0,"Reports":[{"ReportData":"","Timestamp":)" + time + "}]}"})
            EXPECT_THAT(framesOf(container), ElementsAre("[]@" + std::to_string(expected))) << container;
    }
}

TEST(ContainerReaderTest, AReportsTextIsReadAsFarAsItIsHexadecimal) {
    const auto reportOf = [](const std::string& data) {
        return framesOf(R"({"Version":2,"Frames":[{"Type":"InputReport","Timestamp":0,"Data":")" + data + "\"}]}");
    };
    EXPECT_THAT(reportOf("01 FF\\t0x0a\\n00ff"), ElementsAre("[01 ff 0a ff]@0"));
    EXPECT_THAT(reportOf("01 zz ff"), ElementsAre("[01]@0"));
    EXPECT_THAT(reportOf("01 10000 ff"), ElementsAre("[01]@0"));
    EXPECT_THAT(reportOf("01 \\u0000 ff"), ElementsAre("[01]@0"));
}

TEST(ContainerReaderTest, TheSameContainerWrittenInAnotherWayReadsTheSame) {
    for (
        const std::string text : {
            R"({"Frames":[{"Data":"01 ff ","Timestamp":5,"Type":"InputReport"}],"Version":2})",
            R"({"Version":2,"Frames":[{"Type":"InputReport","Data":"01 ff","Timestamp":5}]})",
            " {\t\"Version\" : 2 ,\r\n\"Frames\" : [ { \"Type\" : \"InputReport\" , \"Timestamp\" : 5 , "
            "\"Data\" : \"01 FF \" } ] }\n",
            R"({"Version":2.0,"Frames":[{"Type":"InputReport","Timestamp":5e0,"Data":"01 ff "}]})",
            R"({"Version":2,"Frames":[{"\u0054ype":"Input\u0052eport","Timestamp":5,"Data":"\u00301 ff "}]})",
            R"({"\u0056ersion":2,"Frames":[{"Type":"InputReport","Timestamp":5,"Data":"01\tff"}]})",
            R"({"Version":2,"Frames":[{"Type":"InputReport","Timestamp":5,"Data":"01 ff ","x":"\"}],[{"}]})",
            R"({"Version":2,"Frames":[{"Type":"State","Type":"InputReport","Timestamp":5,"Data":"1","Data":"01 ff "}]})",
            R"({"Version":2,"Frames":[{"Type":"State","Timestamp":1,"Key":"k"}],)"
            R"("Frames":[{"Type":"InputReport","Timestamp":5,"Data":"01 ff "}]})",
        })
        EXPECT_THAT(textsOf(read(text).frames()), ElementsAre("[01 ff]@5")) << text;
}

TEST(ContainerReaderTest, WhatOnlyResemblesAContainerIsNone) {
    const std::string kReport = R"({"Type":"InputReport","Timestamp":5,"Data":"01 ff "})";
    const std::string kInvalidUTF8 = "{\"Type\":\"InputReport\",\"Timestamp\":5,\"Data\":\"01 \xFF\"}";
    for (const std::string& frames : {
             kReport + ",",
             kReport + kReport,
             kReport + ",,",
             kReport + "}",
             kReport.substr(1),
             kInvalidUTF8,
             std::string(R"({"Type":"InputReport","Timestamp":05,"Data":"01 "})"),
             std::string(R"({"Type":"InputReport","Timestamp":+5,"Data":"01 "})"),
             std::string(R"({"Type":"InputReport","Timestamp":5.,"Data":"01 "})"),
             std::string(R"({"Type":"InputReport","Timestamp":18446744073709551616,"Data":"01 "})"),
             std::string(R"({"Type":"InputReport","Timestamp":5,"Data":"01 ",})"),
             std::string(R"({"Type":"InputReport","Timestamp":5,"Data":"01" "02"})"),
             std::string(R"({"Type":"InputReport","Timestamp":5 "Data":"01 "})"),
             std::string(R"({"Type":"InputReport","Timestamp":5,"Data":'01 '})"),
             std::string("{\"Type\":\"InputReport\",\"Timestamp\":5,\"Data\":\"01\nff\"}"),
             std::string(R"({"Type":"State","Timestamp":5,"Key":"k","Value":[}])"),
         }) {
        const std::string text = R"({"Version":2,"Frames":[)" + frames + "]}";
        EXPECT_THAT([&] { return read(text); },
                    ThrowsMessage<std::runtime_error>("migrateSerializedContainer failed: invalid container"))
            << text;
    }
}

TEST(ContainerReaderTest, ReadsOlderVersionsLikeTheCurrentOne) {
    EXPECT_THAT(framesOf(R"({"Version":1,"Frames":[{"Type":"InputReport","Timestamp":5,"Report":"01 ff "},
                                                   {"Type":"State","Timestamp":4,"Key":"k","Value":null},
                                                   {"Type":"Metadata","Timestamp":6,"Key":"m","Report":"02 "}]})"),
                ElementsAre("[01 ff]@5", "k=null@4", "m:@6"));
    EXPECT_THAT(framesOf(R"({"Version":0,"Reports":[{"Timestamp":5,"ReportData":"01 ff "},
                                                    {"Timestamp":4,"ReportData":""}],"Frames":[7]})"),
                ElementsAre("[01 ff]@5", "[]@4"));
    EXPECT_THAT(framesOf(R"({"Version":1})"), ElementsAre());
    EXPECT_THAT(framesOf(R"({"Version":0})"), ElementsAre());
    EXPECT_THAT(framesOf(R"({"Version":0.9})"), ElementsAre());
}

TEST(ContainerReaderTest, WhatIsReadHasNoTargetNoBoundAndNoPlayback) {
    PipelineRecording recording = read(R"({"Version":2,"Frames":[{"Type":"State","Timestamp":1,"Key":"k"}]})");
    EXPECT_EQ(recording.pipeline, nullptr);
    EXPECT_FALSE(recording.playCanContinue());
    for (int i = 0; i < 3; ++i)
        recording.setState(2, "k", nullptr);
    EXPECT_THAT(recording.frames(), SizeIs(4));
}

} // namespace
} // namespace VeltoTouch::Tests
