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
    EXPECT_EQ(outputOf({"convert", "-"}, R"({"Version":1})"), R"({"Frames":[],"Version":2})");
}

TEST(TrimCommandTest, KeepsTheNewestFramesByTimeAndTheSettingsBeforeThem) {
    const std::string text = R"({"Version":2,"Frames":[
        {"Type":"InputReport","Timestamp":50,"Data":"05"},
        {"Type":"State","Timestamp":10,"Key":"a","Value":1},
        {"Type":"InputReport","Timestamp":20,"Data":"02"},
        {"Type":"State","Timestamp":30,"Key":"a","Value":3},
        {"Type":"Metadata","Timestamp":40,"Key":"m"}]})";
    const std::vector<std::string> all{"a=1@10", "[02]@20", "a=3@30", "m:@40", "[05]@50"};
    for (const auto& [count, kept] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"0", {"a=3@30"}},
             {"1", {"a=3@30", "[05]@50"}},
             {"2", {"a=3@30", "m:@40", "[05]@50"}},
             {"3", all},
             {"18446744073709551615", all},
         }) {
        const std::string trimmed = outputOf({"trim", "--max", count, "-"}, text);
        EXPECT_EQ(textsOf(PipelineRecording(makeRef<Data>(trimmed).get()).frames()), kept) << count;
    }
}

TEST(RenderCommandTest, ShowsEveryImageOrThoseOfAFrameNumberEachWithAnEmptyLineBehind) {
    const std::string text =
        SmallRecording().images(1, {{'A', -5}}).send(firmwareEventReport(0)).images(1, {{'I', 7}}).text();
    const auto shown = [](std::uint32_t frame, PadSignals signals, bool raw) {
        InputReport::Image image = makeImage(frame, 1000 + 10 * frame, signals);
        image.padRaw.fill(static_cast<std::uint16_t>(30'000 + frame));
        return Util::stringFromImage(image, raw) + "\n";
    };
    const std::string second = shown(1, {{'I', 7}}, false);
    EXPECT_THAT(second, HasSubstr("# Image frame 1    time 1010 ms\n\n"));
    EXPECT_EQ(outputOf({"render", "-"}, text), shown(0, {{'A', -5}}, false) + second);
    EXPECT_EQ(outputOf({"render", "--raw", "-"}, text), shown(0, {}, true) + shown(1, {}, true));
    EXPECT_EQ(outputOf({"render", "--frame", "1", "-"}, text), second);
    EXPECT_EQ(outputOf({"render", "--frame", "99", "-"}, text), "");
}

TEST(InfoCommandTest, TellsWhatEachFileHoldsAsJSONOrInWordsThatDoNotSteerTheTerminal) {
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
    const auto expected = json(R"({
        "file": "some.json", "version": 2, "frames": {"State": 5, "InputReport": 22, "Metadata": 1},
        "durationNs": 200000000, "images": 20, "invalidReports": 1, "gaps": 1, "resets": 1,
        "settings": {"Pipeline.Algs.HoldTimeoutMilliseconds": 400, "Pipeline.Other": {"a": [1]}},
        "gestures": {"hold": {"PlayPause": 1}, "tap": {"PlayPause": 1}, "firmware reset": {"": 1}}})");
    EXPECT_EQ(outputOf({"info", "--json", file}, ""), JSON::text(expected.get()) + "\n");

    const std::string steering = SmallRecording().set("k\x1b[2J\n", R"("\u001b")").text();
    const std::string text = outputOf({"info", file, "-"}, steering);
    for (const std::string& words :
         {file + "\n", std::string("version            2\n"), std::string("0.200 s\n"),
          std::string("28 (5 settings, 22 input reports, 1 metadata)\n"),
          std::string("Pipeline.Algs.HoldTimeoutMilliseconds = 400\n"), std::string("1 x PlayPause\n"),
          std::string(R"(Pipeline.k\u001b[2J\n = "\u001b")")})
        EXPECT_THAT(text, HasSubstr(words));
    EXPECT_THAT(outputOf({"info", "-"}, R"({"Version":1})"), HasSubstr("version            1\n"));
}

} // namespace
} // namespace VeltoTouch::Tests
