#include "Velto/Analysis/Label.h"
#include "Tests/Support/Frames.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// Labels as "index gesture region>endRegion startNs+span".
std::string labelsIn(const std::list<Frame>& frames) {
    std::string text;
    for (const Analysis::Label& label : Analysis::labelsOf(frames))
        text += std::to_string(label.index) + ' ' + label.gesture + ' ' + label.region + '>' + label.endRegion + ' ' +
                std::to_string(label.startNs) + '+' + std::to_string(label.endNs - label.startNs);
    return text;
}

// A recording of anybody may hold metadata of the key in any form: what is no label is passed over and not counted.
TEST(LabelTest, TakesWhatHasTheFormAndPassesOverTheRest) {
    struct Row {
        const char* value;
        const char* labels;
    };
    static constexpr Row kRows[]{
        {R"({"gesture":"tap","region":"K","startMs":10,"endMs":12})", "1 tap K> 7+2000000"},
        {R"({"gesture":"slide","region":"K","endRegion":"L","startMs":1,"endMs":1})", "1 slide K>L 7+0"},
        {R"({"gesture":"wave","region":5,"endRegion":{},"startMs":10.9,"endMs":12.1})", "1 wave > 7+2000000"},
        {R"({"gesture":"tap","startMs":4294967295,"endMs":1})", "1 tap > 7+2000000"}, // the clock wraps
        {R"({"gesture":"tap","startMs":-1,"endMs":1})", "1 tap > 7+2000000"},
        {R"({"gesture":"tap","startMs":2,"endMs":1})", "1 tap > 7+4294967295000000"}, // it has no way back
        {R"({"gesture":"tap","startMs":1e300,"endMs":0})", "1 tap > 7+1000000"},
        {R"({"gesture":"","startMs":1,"endMs":2})", ""},
        {R"({"gesture":true,"startMs":1,"endMs":2})", ""},
        {R"({"gesture":"tap","startMs":1})", ""},
        {R"({"gesture":"tap","startMs":"1","endMs":2})", ""},
        {R"({"gesture":"tap","startMs":1,"endMs":true})", ""},
        {R"(["tap",1,2])", ""},
        {"null", ""},
    };
    for (const auto& [value, labels] : kRows) {
        const Ref<Value> label = json(value);
        EXPECT_EQ(labels,
                  labelsIn({metadata("Other", label, 3), setting("Label", label, 4), metadata("Label", label, 10)}))
            << value;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
