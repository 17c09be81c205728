#include "Velto/Analysis/Recovery.h"
#include "Plugin/Recording/ContainerWriter.h"
#include "Tests/Support/Frames.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using Analysis::recoverFrames;
using Analysis::Recovery;

std::optional<Recovery> recovered(std::string_view text) { return recoverFrames(*makeRef<Data>(std::string(text))); }

// "VERSION: FRAMES, lost FROM-TO ..."
std::string summaryOf(std::string_view text) {
    const auto recovery = recovered(text);
    if (!recovery)
        return "nothing";
    std::string summary = fmt::format("{}: {}", recovery->version, fmt::join(textsOf(recovery->frames), " "));
    for (const auto& [from, to] : recovery->lost)
        summary += fmt::format(", lost {}-{}", from, to);
    return summary;
}

// A small recording of a version: its text around the frames, the frames' texts and what they stand for.
struct Small {
    std::string head, tail;
    std::vector<std::string> frames;
    std::vector<std::string> meant;
};

const std::vector<Small> kSmall{
    {R"({"Frames":[)",
     R"(],"Version":2})",
     {R"({"Data":"01 ff ","Timestamp":5,"Type":"InputReport"})",
      R"({"Key":"k","Timestamp":6,"Type":"Metadata","Value":{"a":[{"Timestamp":1,"Type":"State","Key":"in"}],"b":"}\"{"}})",
      R"({"Key":"s","Timestamp":7,"Type":"State"})", R"({"Data":"02 ","Timestamp":8,"Type":"InputReport"})"},
     {"[01 ff]@5", R"(k:{"a":[{"Key":"in","Timestamp":1,"Type":"State"}],"b":"}\"{"}@6)", "s=@7", "[02]@8"}},
    {R"({ "Version": 1, "Frames": [ )",
     " ]\n}\n",
     {R"({"Type":"InputReport","Timestamp":5,"Report":"01 ff","Data":"00"})",
      R"({"Type":"State","Timestamp":6,"Key":"s","Value":null})",
      R"({"Type":"InputReport","Timestamp":8,"Report":"02"})"},
     {"[01 ff]@5", "s=null@6", "[02]@8"}},
    {R"({"Version":0,"Reports":[)",
     "]}",
     {R"({"Timestamp":5,"ReportData":"01 ff"})", R"({"ReportData":"02","Timestamp":6.5})",
      R"({"Timestamp":7,"ReportData":"03"})"},
     {"[01 ff]@5", "[02]@6", "[03]@7"}},
};

// All that is meant is saved, in order, but for the frame at `damaged` alone.
void expectAllBut(std::size_t damaged, const Small& small, const std::string& text) {
    std::vector<std::string> wanted = small.meant;
    if (damaged < wanted.size())
        wanted.erase(wanted.begin() + static_cast<std::ptrdiff_t>(damaged));
    const auto recovery = recovered(text);
    ASSERT_EQ(recovery.has_value() || wanted.empty(), true) << text;
    const auto saved = recovery ? textsOf(recovery->frames) : std::vector<std::string>();
    auto next = wanted.begin();
    for (const std::string& frame : saved) {
        if (next != wanted.end() && frame == *next)
            ++next;
    }
    EXPECT_TRUE(next == wanted.end() && saved.size() <= wanted.size() + 1)
        << text << "\n  saved  " << fmt::format("{}", fmt::join(saved, " "));
    if (recovery) {
        EXPECT_EQ(textsOf(recordingFrom(writeContainer(recovery->frames)).frames()), saved) << text;
    }
}

TEST(RecoveryTest, EveryFrameThatIsNotTouchedSurvivesDamageAtAnyByte) {
    for (const Small& small : kSmall) {
        std::string text = small.head;
        std::vector<std::size_t> frameOfByte(text.size(), small.frames.size());
        for (std::size_t i = 0; i < small.frames.size(); ++i) {
            text += (i == 0 ? "" : ",") + small.frames[i];
            frameOfByte.resize(text.size() - small.frames[i].size(), small.frames.size());
            frameOfByte.resize(text.size(), i);
        }
        text += small.tail;
        frameOfByte.resize(text.size(), small.frames.size());
        expectAllBut(small.frames.size(), small, text);
        for (std::size_t byte = 0; byte < text.size(); ++byte) {
            for (const unsigned mask : {0x01U, 0x02U, 0x20U, 0x80U}) {
                std::string flipped = text;
                flipped[byte] = static_cast<char>(static_cast<unsigned char>(flipped[byte]) ^ mask);
                expectAllBut(frameOfByte[byte], small, flipped);
            }
            expectAllBut(frameOfByte[byte], small, std::string(text).erase(byte, 1));
            expectAllBut(frameOfByte[byte], small, std::string(text).insert(byte, "\"{[garbage"));
            for (const bool isEndCut : {true, false}) {
                Small left = small;
                std::erase_if(left.meant, [&, i = std::size_t{0}](const auto&) mutable {
                    const auto first = std::ranges::find(frameOfByte, i++);
                    const auto begin = static_cast<std::size_t>(first - frameOfByte.begin());
                    return isEndCut ? begin + small.frames[i - 1].size() > byte : begin < byte;
                });
                expectAllBut(small.frames.size(), left, isEndCut ? text.substr(0, byte) : text.substr(byte));
            }
        }
    }
}

TEST(RecoveryTest, SaysTheVersionAndWhatIsLost) {
    const std::string current = R"({"Data":"01","Timestamp":5,"Type":"InputReport"})";
    const std::string older = R"({"Report":"01","Timestamp":5,"Type":"InputReport"})";
    const std::string both = R"({"Data":"01","Report":"02","Timestamp":5,"Type":"InputReport"})";
    const std::string oldest = R"({"Timestamp":5,"ReportData":"01"})";
    for (const auto& [text, summary] : std::vector<std::pair<std::string, std::string>>{
             {R"({"Frames":[],"Version":2})", "2: "},
             {R"({"Frames":[],"Version":3})", "nothing"},
             {"", "nothing"},
             {R"({"Frames":[)" + current, "2: [01]@5, lost 59-59"},
             {R"({"Frames":[{},)" + current + R"(],"Version":2})", "2: [01]@5, lost 11-13"},
             {R"({"Frames":[)" + current + " xx ," + current + R"(],"Version":2})", "2: [01]@5 [01]@5, lost 60-62"},
             {R"({"Frames":[)" + current + R"(,{"Data":"0],"Version":2})", "2: [01]@5, lost 60-70"},
             // The version is the text's, or that of the frames' form, which is right where they disagree.
             {R"({"Version":1,"Frames":[)" + both, "1: [02]@5, lost 85-85"},
             {R"({"Version":,"Frames":[)" + both + "]}", "2: [01]@5, lost 0-22"},
             {R"({"Version":9,"Frames":[)" + both + "," + older + "]}", "1: [02]@5 [01]@5"},
             {R"({"Version":2,"Frames":[)" + older + "]}", "1: [01]@5"},
             {R"({"Version":2,"Reports":[)" + oldest + "]}", "0: [01]@5"},
             {R"({"Version":0,"Frames":[)" + current + "]}", "2: [01]@5"},
             {current + oldest + current, "2: [01]@5 [01]@5 [01]@5, lost 129-129"},
         })
        EXPECT_EQ(summaryOf(text), summary) << text;
}

// Two braces or quotes in another's sight must not make every try as long as the text: a text full of braces would then
// take longer than a test may.
TEST(RecoveryTest, TakesTimeInProportionToTheTextWhateverIsInIt) {
    const std::string frame = R"({"Data":"01","Timestamp":5,"Type":"InputReport"})";
    for (const std::string piece :
         {"{", "\"", "[", "{\"", "{\":1,\"", R"({"a":)", R"({"Type":"State","Timestamp":1,"x":)"}) {
        std::string text;
        while (text.size() < std::size_t{1} << 20U)
            text += piece;
        const auto recovery = recovered(text + "\n" + frame);
        ASSERT_TRUE(recovery) << piece;
        EXPECT_THAT(textsOf(recovery->frames), testing::ElementsAre("[01]@5")) << piece;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
