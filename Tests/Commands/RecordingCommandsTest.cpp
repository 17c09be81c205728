#include "Plugin/Shared/ImageText.h"
#include "Tests/Support/Frames.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string outputOf(const Arguments& arguments, const std::string& input) {
    const Outcome outcome = velto().reading(input).run(arguments);
    EXPECT_THAT(outcome, Ends(0, testing::_));
    return outcome.output;
}

TEST(RecordingCommandsTest, ConvertWritesAnyVersionAsTheCurrentOneSortedAndCompact) {
    EXPECT_EQ(outputOf({"convert", "-"}, R"({ "Version": 0, "Reports": [
                  {"Timestamp": 9007199254740993, "ReportData": "01 FF"}, {"Timestamp": 5.5, "ReportData": "2"}]})"),
              R"({"Frames":[{"Data":"02 ","Timestamp":5,"Type":"InputReport"},)"
              R"({"Data":"01 ff ","Timestamp":9007199254740993,"Type":"InputReport"}],"Version":2})");
}

TEST(RecordingCommandsTest, TrimKeepsTheNewestFramesByTimeAndTheSettingsBeforeThem) {
    const std::string text = R"({"Version":2,"Frames":[
        {"Type":"InputReport","Timestamp":50,"Data":"05"},
        {"Type":"State","Timestamp":10,"Key":"a","Value":1},
        {"Type":"InputReport","Timestamp":20,"Data":"02"},
        {"Type":"State","Timestamp":30,"Key":"a","Value":3},
        {"Type":"Metadata","Timestamp":40,"Key":"m"}]})";
    const std::vector<std::string> all{"a=1@10", "[02]@20", "a=3@30", "m:@40", "[05]@50"};
    for (const auto& [count, kept] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"0", {"a=3@30"}},
             {"2", {"a=3@30", "m:@40", "[05]@50"}},
             {"3", all},
             {"18446744073709551615", all},
         }) {
        const std::string trimmed = outputOf({"trim", "--max", count, "-"}, text);
        EXPECT_EQ(textsOf(PipelineRecording(makeRef<Data>(trimmed).get()).frames()), kept) << count;
    }
}

TEST(RecordingCommandsTest, RenderShowsEveryImageOrThoseOfAFrameNumberEachWithAnEmptyLineBehind) {
    const SmallRecording recording =
        SmallRecording().images(1, {{'A', -5}}).send(firmwareEventReport(0)).images(1, {{'I', 7}});
    const auto shown = [&](const Frame& frame, bool raw) {
        return Util::stringFromImage(*InputReport::Image::parse(frame.report.data(), frame.report.size()), raw) + "\n";
    };
    const std::string text = recording.text();
    const Frame& first = recording.frames().front();
    const Frame& last = recording.frames().back();
    EXPECT_THAT(shown(last, false), HasSubstr("# Image frame 1    time 1010 ms\n\n"));
    EXPECT_EQ(outputOf({"render", "-"}, text), shown(first, false) + shown(last, false));
    EXPECT_EQ(outputOf({"render", "--raw", "-"}, text), shown(first, true) + shown(last, true));
    EXPECT_EQ(outputOf({"render", "--frame", "1", "-"}, text), shown(last, false));
    EXPECT_THAT(velto().reading(text).run({"render", "--frame", "99", "-"}),
                Ends(1, "", "velto: -: none of the 2 images has frame number 99\n"));
}

TEST(RecordingCommandsTest, InfoTellsWhatEachFileHoldsAsJSONOrInWordsThatDoNotSteerTheTerminal) {
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
    const auto expected = json(R"({"file": ")" + file + R"(",
        "version": 2, "frames": {"State": 5, "InputReport": 22, "Metadata": 1},
        "durationNs": 200000000, "images": 20, "invalidReports": 1, "gaps": 1, "resets": 1,
        "settings": {"Pipeline.Algs.HoldTimeoutMilliseconds": 400, "Pipeline.Other": {"a": [1]}},
        "gestures": {"hold": {"PlayPause": 1}, "tap": {"PlayPause": 1}, "firmware reset": {"": 1}}})");
    EXPECT_EQ(outputOf({"info", "--json", file}, ""), JSON::text(expected.get()) + "\n");

    const std::string steering = SmallRecording()
                                     .set("k\x1b[2J\n", R"("\u001b\u007f\u009b\u202e\u00e4")")
                                     .set("long", '"' + std::string(1'000'000, 'x') + '"')
                                     .text();
    EXPECT_THAT(outputOf({"info", file, "-"}, steering),
                AllOf(HasSubstr(file + "\n"), HasSubstr("version            2\n"), HasSubstr("0.200 s\n"),
                      HasSubstr("28 (5 settings, 22 input reports, 1 metadata)\n"),
                      HasSubstr("gaps               1\n"
                                "                         0.100 s  frame 13 after frame 9\n"
                                "  firmware resets    1\n"
                                "                         0.200 s  after frame 22\n"),
                      HasSubstr("Pipeline.Algs.HoldTimeoutMilliseconds = 400\n"), HasSubstr("1 x PlayPause\n"),
                      HasSubstr(R"(Pipeline.k\u001b[2J\n = "\u001b\u007f\u009b\u202eä")"),
                      HasSubstr("Pipeline.long = \"" + std::string(199, 'x') + "... (1000002 bytes)\n")));
    EXPECT_THAT(outputOf({"info", "-"}, R"({"Version":1})"), HasSubstr("version            1\n"));
}

TEST(RecordingCommandsTest, InfoSaysWhatIsWrongWithInvalidReportsAndListsTheFirstOfThem) {
    SmallRecording recording;
    recording.send({}).images(2, {}).send(Report(72, 0x01)).send(Report(9, 0x02)).send({0x1f, 0x00});
    for (int i = 0; i < 8; ++i)
        recording.send({0x03});
    std::string listed = "invalid reports    12\n"
                         "                         0.000 s  before the first frame: empty report\n";
    for (const std::string fault : {"image report with 72 of 73 bytes", "firmware event report with 9 of 10 bytes",
                                    "unknown report ID 0x1f (length 2)"})
        listed += "                         0.020 s  after frame 1: " + fault + "\n";
    for (int i = 0; i < 6; ++i)
        listed += "                         0.020 s  after frame 1: unknown report ID 0x03 (length 1)\n";
    listed += "                     ... and 2 more\n  gaps               0\n";
    EXPECT_THAT(outputOf({"info", "-"}, recording.text()), HasSubstr(listed));
}

} // namespace
} // namespace VeltoTouch::Tests
