#include "Recording/PipelineRecording.h"

#include "Tests/Support/Frames.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

std::string migrated(std::string_view text) {
    return JSON::text(PipelineRecording::migrateSerializedContainer(json(text)).get());
}

TEST(MigrationTest, ACurrentContainerIsReturnedItselfWhateverItHolds) {
    const Ref<Value> container = json(R"({"Version":2,"Frames":{"Type":7},"Other":1})");
    EXPECT_EQ(PipelineRecording::migrateSerializedContainer(container), container);
}

TEST(MigrationTest, OlderVersionsBecomeTheCurrentOneAndAbsentFramesNone) {
    EXPECT_EQ(migrated(R"({"Version":1,"Maker":"dropped","Frames":[
                  {"Type":"InputReport","Timestamp":"kept","Report":[1],"Data":"old","Other":null},
                  {"Type":"State","Report":"kept","Key":7},
                  {"Type":"Reset"}]})"),
              R"({"Frames":[{"Data":[1],"Other":null,"Timestamp":"kept","Type":"InputReport"},)"
              R"({"Key":7,"Report":"kept","Type":"State"},{"Type":"Reset"}],"Version":2})");
    EXPECT_EQ(migrated(R"({"Version":0,"Maker":"dropped","Frames":[7],"Reports":[
                  {"Timestamp":1.5,"ReportData":"01 ","Other":1},{"Timestamp":null,"ReportData":null}]})"),
              R"({"Frames":[{"Data":"01 ","Timestamp":1.5,"Type":"InputReport"},)"
              R"({"Data":null,"Timestamp":null,"Type":"InputReport"}],"Version":2})");
    EXPECT_EQ(migrated(R"({"Version":1})"), R"({"Frames":[],"Version":2})");
    EXPECT_EQ(migrated(R"({"Version":0})"), R"({"Frames":[],"Version":2})");
}

} // namespace
} // namespace VeltoTouch::Tests
