#include "Recording/PipelineRecording.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// The parser's bound counts what stands in the innermost array, so an empty one and a filled one differ.
TEST(DeepValueTest, ASettingOfAnyDepthLeavesItsRecordingReadable) {
    for (const bool isFilled : {false, true}) {
        std::vector<Ref<Value>> inner;
        if (isFilled)
            inner.emplace_back(Number::withBool(true));
        Ref<Value> value = makeRef<Array>(std::move(inner));
        while (value->depth() < Value::kDeepest) {
            value = makeRef<Array>(std::vector{value});
            PipelineRecording recording;
            recording.setState(1, "Pipeline.Deep", value);
            EXPECT_NO_THROW(PipelineRecording(recording.json().get()))
                << value->depth() << (isFilled ? " filled" : " empty");
        }
    }
}

} // namespace
} // namespace VeltoTouch::Tests
