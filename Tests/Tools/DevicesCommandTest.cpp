#include "Surface/ReportDescriptor.h"
#include "Tests/Support/Program.h"

namespace VeltoTouch::Tests {
namespace {

// What a rule of udev asks before the node can be opened, here of folders such as the kernel's.
TEST(DevicesCommandTest, ACheckTellsByItsExitStatusAloneWhetherAFolderIsASurfaces) {
    const std::string surface(Surface::kReportDescriptor.begin(), Surface::kReportDescriptor.end());
    const std::pair<std::string, int> rows[]{
        {surface, 0},
        {surface.substr(0, surface.size() / 2), 1},
        {"", 1},
    };
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("device"));
    EXPECT_THAT(velto().run({"devices", "--check", folder.path(".")}), Ends(1, ""));
    for (const auto& [descriptor, status] : rows) {
        folder.write("device/report_descriptor", descriptor);
        EXPECT_THAT(velto().run({"devices", "--check", folder.path(".")}), Ends(status, "")) << descriptor.size();
    }
    for (const char* nothing : {"/dev/hidraw9999", "/dev/null", "/dev/", "hidraw"})
        EXPECT_THAT(velto().run({"devices", "--check", nothing}), Ends(1, "")) << nothing;
}

TEST(DevicesCommandTest, WrongUsageExitsWith2) {
    for (const Arguments& wrong : std::vector<Arguments>{{"/dev/hidraw0"},
                                                         {"--duration", "1"},
                                                         {"--watch", "--duration", "0"},
                                                         {"--check"},
                                                         {"--check", ""},
                                                         {"--check", "/dev/hidraw0", "--jsonl"},
                                                         {"--check", "/dev/hidraw0", "--watch"}}) {
        Arguments arguments{"devices"};
        arguments.insert(arguments.end(), wrong.begin(), wrong.end());
        EXPECT_THAT(velto().run(arguments), Ends(2, "", testing::Ne(""))) << testing::PrintToString(wrong);
    }
}

} // namespace
} // namespace VeltoTouch::Tests
