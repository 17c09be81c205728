#pragma once

#include <ostream>

// Containers that no reader takes, each with what is said of it. `fromMigration` tells whose complaint it is: the
// migration's own is told by the reader as "migrateSerializedContainer failed: ...".

namespace VeltoTouch::Tests {

struct BadContainer {
    const char* name;
    const char* text;
    const char* message;
    bool fromMigration = false;
};
inline void PrintTo(const BadContainer& row, std::ostream* out) { *out << row.name; }

constexpr bool kMigration = true;

constexpr BadContainer kBadContainers[] = {
    // The container
    {"NoText", "", "invalid container", kMigration},
    {"Truncated", R"({"Version":2,"Frames":[)", "invalid container", kMigration},
    {"MoreBehindIt", R"({"Version":2,"Frames":[]} {})", "invalid container", kMigration},
    {"NumberOfNoType", R"({"Version":2,"Frames":[],"X":18446744073709551616})", "invalid container", kMigration},
    {"TopLevelArray", R"([])", "invalid container", kMigration},
    {"TopLevelNull", R"(null)", "invalid container", kMigration},
    {"NoVersion", R"({"Frames":[]})", "invalid version", kMigration},
    {"VersionInLowerCase", R"({"version":2,"Frames":[]})", "invalid version", kMigration},
    {"VersionString", R"({"Version":"2","Frames":[]})", "invalid version", kMigration},
    {"VersionBoolean", R"({"Version":true,"Frames":[]})", "invalid version", kMigration},
    {"VersionNull", R"({"Version":null,"Frames":[]})", "invalid version", kMigration},
    {"VersionTooNew", R"({"Version":3,"Frames":[]})", "invalid container version: 3", kMigration},
    {"VersionNegative", R"({"Version":-1,"Frames":[]})", "invalid container version: 18446744073709551615", kMigration},
    {"VersionHuge", R"({"Version":1e30})", "invalid container version: 18446744073709551615", kMigration},
    {"LastVersionCounts", R"({"Version":2,"Frames":[],"Version":3})", "invalid container version: 3", kMigration},
    {"NoFrames", R"({"Version":2})", "invalid frames"},
    {"FramesNull", R"({"Version":2,"Frames":null})", "invalid frames"},
    {"FramesObject", R"({"Version":2,"Frames":{}})", "invalid frames"},
    // Frames, in the order of the checks
    {"FrameNull", R"({"Version":2,"Frames":[null]})", "invalid frame"},
    {"FrameNumber", R"({"Version":2,"Frames":[7]})", "invalid frame"},
    {"FrameArray", R"({"Version":2,"Frames":[["Type"]]})", "invalid frame"},
    {"NoTypeBeforeTimestamp", R"({"Version":2,"Frames":[{}]})", "invalid frame type"},
    {"TypeNumber", R"({"Version":2,"Frames":[{"Type":1,"Timestamp":1,"Key":"k"}]})", "invalid frame type"},
    {"TypeUnknown", R"({"Version":2,"Frames":[{"Type":"Reset","Timestamp":1,"Key":"k"}]})", "invalid frame type"},
    {"TypeInLowerCase", R"({"Version":2,"Frames":[{"Type":"state","Timestamp":1,"Key":"k"}]})", "invalid frame type"},
    {"NoTimestampBeforeUnknownType", R"({"Version":2,"Frames":[{"Type":"Reset"}]})", "invalid frame timestamp"},
    {"NoTimestampBeforeKey", R"({"Version":2,"Frames":[{"Type":"State"}]})", "invalid frame timestamp"},
    {"TimestampString", R"({"Version":2,"Frames":[{"Type":"State","Key":"k","Timestamp":"1"}]})",
     "invalid frame timestamp"},
    {"TimestampBoolean", R"({"Version":2,"Frames":[{"Type":"State","Key":"k","Timestamp":true}]})",
     "invalid frame timestamp"},
    {"TimestampNull", R"({"Version":2,"Frames":[{"Type":"State","Key":"k","Timestamp":null}]})",
     "invalid frame timestamp"},
    {"ReportWithoutType", R"({"Version":2,"Frames":[{"Timestamp":1,"Data":"01 "}]})", "invalid frame type"},
    {"ReportWithoutTimestamp", R"({"Version":2,"Frames":[{"Type":"InputReport","Data":"01 "}]})",
     "invalid frame timestamp"},
    {"ReportWithoutData", R"({"Version":2,"Frames":[{"Type":"InputReport","Timestamp":1}]})", "invalid report"},
    {"NoStateKey", R"({"Version":2,"Frames":[{"Type":"State","Timestamp":1,"Value":1}]})", "invalid state key"},
    {"StateKeyNull", R"({"Version":2,"Frames":[{"Type":"State","Timestamp":1,"Key":null}]})", "invalid state key"},
    {"NoMetadataKey", R"({"Version":2,"Frames":[{"Type":"Metadata","Timestamp":1}]})", "invalid metadata key"},
    {"MetadataKeyNumber", R"({"Version":2,"Frames":[{"Type":"Metadata","Timestamp":1,"Key":1}]})",
     "invalid metadata key"},
    {"DataUnderItsOldName", R"({"Version":2,"Frames":[{"Type":"InputReport","Timestamp":1,"Report":"01 "}]})",
     "invalid report"},
    {"DataArray", R"({"Version":2,"Frames":[{"Type":"InputReport","Timestamp":1,"Data":[1]}]})", "invalid report"},
    {"ByteTooLarge", R"({"Version":2,"Frames":[{"Type":"InputReport","Timestamp":1,"Data":"01 100 ff "}]})",
     "invalid hex string"},
    {"SecondFrame", R"({"Version":2,"Frames":[{"Type":"State","Timestamp":1,"Key":"k"},{"Type":"State"}]})",
     "invalid frame timestamp"},
    // Version 1
    {"V1FramesString", R"({"Version":1,"Frames":"[]"})", "invalid frames"},
    {"V1FramesNull", R"({"Version":1,"Frames":null})", "invalid frames"},
    {"V1FrameNumber", R"({"Version":1,"Frames":[7]})", "invalid frame", kMigration},
    {"V1NoType", R"({"Version":1,"Frames":[{"Timestamp":1,"Report":"01 "}]})", "frame lacks Type", kMigration},
    {"V1TypeNull", R"({"Version":1,"Frames":[{"Type":null,"Timestamp":1}]})", "frame Type isn't a string", kMigration},
    {"V1TypeUnknown", R"({"Version":1,"Frames":[{"Type":"Reset","Timestamp":1}]})", "invalid frame type"},
    {"V1NoReport", R"({"Version":1,"Frames":[{"Type":"InputReport","Timestamp":1,"Data":"01 "}]})",
     "frame lacks Report", kMigration},
    {"V1ReportNullIsThereAndNoText",
     R"({"Version":1,"Frames":[{"Type":"InputReport","Timestamp":1,"Report":null,"Data":"01 "}]})", "invalid report"},
    {"V1NoTimestamp", R"({"Version":1,"Frames":[{"Type":"InputReport","Report":"01 "}]})", "invalid frame timestamp"},
    {"V1MigrationOfALaterFrameComesFirst",
     R"({"Version":1,"Frames":[{"Type":"State","Timestamp":"x"},{"Type":"InputReport"}]})", "frame lacks Report",
     kMigration},
    // Version 0
    {"V0ReportsObject", R"({"Version":0,"Reports":{}})", "invalid frames"},
    {"V0ReportString", R"({"Version":0,"Reports":["01 "]})", "invalid frame", kMigration},
    {"V0NoTimestampBeforeReportData", R"({"Version":0,"Reports":[{}]})", "frame lacks Timestamp", kMigration},
    {"V0NoReportData", R"({"Version":0,"Reports":[{"Timestamp":1,"Data":"01 "}]})", "frame lacks ReportData",
     kMigration},
    {"V0TimestampString", R"({"Version":0,"Reports":[{"Timestamp":"1","ReportData":"01 "}]})",
     "invalid frame timestamp"},
    {"V0ReportDataNumber", R"({"Version":0,"Reports":[{"Timestamp":1,"ReportData":1}]})", "invalid report"},
    {"V0ByteTooLarge", R"({"Version":0,"Reports":[{"Timestamp":1,"ReportData":"1ff"}]})", "invalid hex string"},
    {"V0MigrationOfALaterReportComesFirst",
     R"({"Version":0,"Reports":[{"Timestamp":1,"ReportData":"100"},{"Timestamp":2}]})", "frame lacks ReportData",
     kMigration},
};

} // namespace VeltoTouch::Tests
