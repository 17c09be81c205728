#include "Shared/Util.h"
#include "Tests/Support/Frames.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::HasSubstr;

std::string outputOf(const Arguments& arguments, const std::string& input) {
    const Outcome outcome = velto().reading(input).run(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    return outcome.output;
}

TEST(ConvertCommandTest, WritesAnyVersionAsTheCurrentOneSortedAndCompact) {
    EXPECT_EQ(outputOf({"convert", "-"}, R"({ "Version": 0, "Reports": [
                  {"Timestamp": 9007199254740993, "ReportData": "01 FF"}, {"Timestamp": 5.5, "ReportData": "2"}]})"),
              R"({"Frames":[{"Data":"02 ","Timestamp":5,"Type":"InputReport"},)"
              R"({"Data":"01 ff ","Timestamp":9007199254740993,"Type":"InputReport"}],"Version":2})");
    EXPECT_EQ(outputOf({"convert", "-"}, R"({ "Version": 1, "Frames": [
                  {"Type": "Metadata", "Timestamp": 2, "Key": "m", "Value": null, "Other": 1},
                  {"Type": "State", "Timestamp": 1, "Key": "k"}]})"),
              R"({"Frames":[{"Key":"k","Timestamp":1,"Type":"State"},)"
              R"({"Key":"m","Timestamp":2,"Type":"Metadata","Value":null}],"Version":2})");
    EXPECT_EQ(outputOf({"convert", "-"}, R"({"Version":1})"), R"({"Frames":[],"Version":2})");
}

TEST(TrimCommandTest, KeepsTheNewestFramesByTimeAndTheSettingsBeforeThem) {
    const std::string text = R"({"Version":2,"Frames":[
        {"Type":"InputReport","Timestamp":50,"Data":"05"},
        {"Type":"State","Timestamp":10,"Key":"a","Value":1},
        {"Type":"InputReport","Timestamp":20,"Data":"02"},
        {"Type":"State","Timestamp":30,"Key":"a","Value":3},
        {"Type":"Metadata","Timestamp":40,"Key":"m"}]})";
    const auto trimmedTo = [&](const std::string& count) {
        return textsOf(PipelineRecording(makeRef<Data>(outputOf({"trim", "--max", count, "-"}, text)).get()).frames());
    };
    using testing::ElementsAre;
    EXPECT_THAT(trimmedTo("0"), ElementsAre("a=3@30"));
    EXPECT_THAT(trimmedTo("1"), ElementsAre("a=3@30", "[05]@50"));
    EXPECT_THAT(trimmedTo("2"), ElementsAre("a=3@30", "m:@40", "[05]@50"));
    EXPECT_THAT(trimmedTo("3"), ElementsAre("a=1@10", "[02]@20", "a=3@30", "m:@40", "[05]@50"));
    EXPECT_THAT(trimmedTo("18446744073709551615"), ElementsAre("a=1@10", "[02]@20", "a=3@30", "m:@40", "[05]@50"));
}

TEST(RenderCommandTest, ShowsEveryImageOrThoseOfAFrameNumberEachWithAnEmptyLineBehind) {
    const SmallRecording recording = SmallRecording()
                                         .images(2, {{'A', -5}, {'O', 1234}})
                                         .send(firmwareEventReport(0))
                                         .tell("Accel", "{}")
                                         .images(1, {{'I', 7}});
    std::string signals;
    std::string raw;
    std::string second;
    for (const Frame& frame : recording.frames()) {
        const auto image = InputReport::Image::parse(frame.report.data(), frame.report.size());
        if (!image)
            continue;
        signals.append(Util::stringFromImage(*image, false)).append("\n");
        raw.append(Util::stringFromImage(*image, true)).append("\n");
        if (image->frameNumber == 1)
            second.append(Util::stringFromImage(*image, false)).append("\n");
    }
    const std::string text = recording.text();
    EXPECT_EQ(outputOf({"render", "-"}, text), signals);
    EXPECT_EQ(outputOf({"render", "--raw", "-"}, text), raw);
    EXPECT_EQ(outputOf({"render", "--frame", "1", "-"}, text), second);
    EXPECT_EQ(outputOf({"render", "--frame", "99", "-"}, text), "");
    EXPECT_THAT(second, HasSubstr("# Image frame 1    time 1010 ms\n\n"));
}

class InfoCommandTest : public testing::Test {
protected:
    const TemporaryFolder folder;
    const std::string file = folder.write("some.json", SmallRecording()
                                                           .set("Algs.HoldTimeoutMilliseconds", "700")
                                                           .set("Algs.ResetEventStats", "1")
                                                           .set("Algs.HoldTimeoutMilliseconds", "30")
                                                           .set("Other", "{\"a\":[1]}")
                                                           .touchForMs(80)
                                                           .tell("Accel", "{}")
                                                           .loseFrames(3)
                                                           .set("Algs.HoldTimeoutMilliseconds", "400")
                                                           .touchForMs(80)
                                                           .send(firmwareEventReport(0))
                                                           .send({0x01})
                                                           .text());
};

TEST_F(InfoCommandTest, TellsWhatARecordingHoldsAsJSON) {
    const std::string line = outputOf({"info", "--json", file}, "");
    const auto expected = json(R"({
        "file": "some.json", "version": 2, "frames": {"State": 5, "InputReport": 22, "Metadata": 1},
        "durationNs": 200000000, "images": 20, "invalidReports": 1, "gaps": 1, "resets": 1,
        "settings": {"Pipeline.Algs.HoldTimeoutMilliseconds": 400, "Pipeline.Other": {"a": [1]}},
        "gestures": {"hold": {"PlayPause": 1}, "tap": {"PlayPause": 1}, "firmware reset": {"": 1}}})");
    EXPECT_EQ(line, JSON::text(expected.get()) + "\n");
}

TEST_F(InfoCommandTest, TellsEachFileInWords) {
    const std::string old = folder.write("old.json", R"({"Version":1,"Frames":[]})");
    const std::string text = outputOf({"info", file, old}, "");
    for (const std::string& words :
         {file + "\n", old + "\n", std::string("version            2\n"), std::string("version            1\n"),
          std::string("28 (5 settings, 22 input reports, 1 metadata)\n"), std::string("0.200 s\n"),
          std::string("Pipeline.Algs.HoldTimeoutMilliseconds = 400\n"), std::string("1 x PlayPause\n")})
        EXPECT_THAT(text, HasSubstr(words));
}

TEST_F(InfoCommandTest, WhatARecordingSaysDoesNotSteerTheTerminal) {
    const std::string text = outputOf({"info", "-"}, SmallRecording().set("k\x1b[2J\n", "\"\\u001b\"").text());
    EXPECT_THAT(text, HasSubstr(R"(Pipeline.k\u001b[2J\n = "\u001b")"));
}

} // namespace
} // namespace VeltoTouch::Tests
