#pragma once

#include <string>
#include <vector>

// Containers that no reader takes, each with what is said of it. `fromMigration` tells whose complaint it is: the
// migration's own is told by the reader as "migrateSerializedContainer failed: ...".

namespace VeltoTouch::Tests {

struct BadContainer {
    const char* name;
    std::string text;
    const char* message;
    bool fromMigration = false;
};

inline std::string version2(const std::string& frames) { return R"({"Version":2,"Frames":[)" + frames + "]}"; }
inline std::string version1(const std::string& frames) { return R"({"Version":1,"Frames":[)" + frames + "]}"; }
inline std::string version0(const std::string& reports) { return R"({"Version":0,"Reports":[)" + reports + "]}"; }

inline std::vector<BadContainer> badContainers() {
    constexpr bool kMigration = true;
    return {
        {"more behind it", R"({"Version":2,"Frames":[]} {})", "invalid container", kMigration},
        {"an array", R"([])", "invalid container", kMigration},
        {"no version", R"({"Frames":[]})", "invalid version", kMigration},
        {"version is a string", R"({"Version":"2","Frames":[]})", "invalid version", kMigration},
        {"version is a boolean", R"({"Version":true,"Frames":[]})", "invalid version", kMigration},
        {"version too new", R"({"Version":3,"Frames":[]})", "invalid container version: 3", kMigration},
        {"version negative", R"({"Version":-1})", "invalid container version: 18446744073709551615", kMigration},
        {"version huge", R"({"Version":1e30})", "invalid container version: 18446744073709551615", kMigration},
        {"last version counts", R"({"Version":2,"Version":3})", "invalid container version: 3", kMigration},
        {"no frames", R"({"Version":2})", "invalid frames"},
        {"frames are null", R"({"Version":2,"Frames":null})", "invalid frames"},
        {"frames are an object", R"({"Version":2,"Frames":{}})", "invalid frames"},

        // Frames, in the order of the checks
        {"frame is null", version2("null"), "invalid frame"},
        {"frame is an array", version2(R"(["Type"])"), "invalid frame"},
        {"no type, told before the timestamp", version2("{}"), "invalid frame type"},
        {"report without type", version2(R"({"Timestamp":1,"Data":"01 "})"), "invalid frame type"},
        {"type is a number", version2(R"({"Type":1,"Timestamp":1,"Key":"k"})"), "invalid frame type"},
        {"type in lower case", version2(R"({"Type":"state","Timestamp":1,"Key":"k"})"), "invalid frame type"},
        {"no timestamp, told before the type", version2(R"({"Type":"Reset"})"), "invalid frame timestamp"},
        {"no timestamp, told before the key", version2(R"({"Type":"State"})"), "invalid frame timestamp"},
        {"no timestamp of a report", version2(R"({"Type":"InputReport","Data":""})"), "invalid frame timestamp"},
        {"timestamp is a string", version2(R"({"Type":"State","Timestamp":"1"})"), "invalid frame timestamp"},
        {"timestamp is a boolean", version2(R"({"Type":"State","Timestamp":true})"), "invalid frame timestamp"},
        {"no setting's key", version2(R"({"Type":"State","Timestamp":1,"Value":1})"), "invalid state key"},
        {"setting's key is null", version2(R"({"Type":"State","Timestamp":1,"Key":null})"), "invalid state key"},
        {"no metadata's key", version2(R"({"Type":"Metadata","Timestamp":1})"), "invalid metadata key"},
        {"report under its old name", version2(R"({"Type":"InputReport","Timestamp":1,"Report":""})"),
         "invalid report"},
        {"report is an array", version2(R"({"Type":"InputReport","Timestamp":1,"Data":[1]})"), "invalid report"},
        {"byte too large", version2(R"({"Type":"InputReport","Timestamp":1,"Data":"01 100 "})"), "invalid hex string"},
        {"second frame", version2(R"({"Type":"State","Timestamp":1,"Key":"k"},{})"), "invalid frame type"},

        {"1: frames are null, not absent", R"({"Version":1,"Frames":null})", "invalid frames"},
        {"1: frame is a number", version1("7"), "invalid frame", kMigration},
        {"1: no type", version1(R"({"Timestamp":1,"Report":"01 "})"), "frame lacks Type", kMigration},
        {"1: type is null", version1(R"({"Type":null,"Timestamp":1})"), "frame Type isn't a string", kMigration},
        {"1: unknown type", version1(R"({"Type":"Reset","Timestamp":1})"), "invalid frame type"},
        {"1: no report", version1(R"({"Type":"InputReport","Timestamp":1,"Data":"01 "})"), "frame lacks Report",
         kMigration},
        {"1: report is null, not absent", version1(R"({"Type":"InputReport","Timestamp":1,"Report":null,"Data":""})"),
         "invalid report"},
        {"1: no timestamp", version1(R"({"Type":"InputReport","Report":"01 "})"), "invalid frame timestamp"},
        {"1: migration of a later frame comes first",
         version1(R"({"Type":"State","Timestamp":"x"},{"Type":"InputReport"})"), "frame lacks Report", kMigration},

        {"0: reports are an object", R"({"Version":0,"Reports":{}})", "invalid frames"},
        {"0: report is a string", version0(R"("01 ")"), "invalid frame", kMigration},
        {"0: no timestamp, told before the report", version0("{}"), "frame lacks Timestamp", kMigration},
        {"0: no report", version0(R"({"Timestamp":1,"Data":"01 "})"), "frame lacks ReportData", kMigration},
        {"0: timestamp is a string", version0(R"({"Timestamp":"1","ReportData":"01 "})"), "invalid frame timestamp"},
        {"0: report is a number", version0(R"({"Timestamp":1,"ReportData":1})"), "invalid report"},
        {"0: migration of a later report comes first",
         version0(R"({"Timestamp":1,"ReportData":"100"},{"Timestamp":2})"), "frame lacks ReportData", kMigration},
    };
}

} // namespace VeltoTouch::Tests
