#include "Tests/Support/Program.h"
#include "Velto/Surface/ReportDescriptor.h"

#include <cstdlib>

#include <sys/wait.h>

namespace VeltoTouch::Tests {
namespace {

// What a rule of udev asks before the node can be opened, here of folders such as the kernel's.
TEST(CheckDeviceTest, TheExitStatusAloneSaysWhetherAFolderIsASurfaces) {
    const TemporaryFolder folder;
    const auto check = [&](const std::string& node) {
        const std::string output = folder.path("output");
        const int status = std::system((VELTO_CHECK_DEVICE " '" + node + "' >'" + output + "' 2>&1").c_str());
        EXPECT_EQ(std::filesystem::file_size(output), 0U) << node;
        return WEXITSTATUS(status);
    };
    const std::string surface(Surface::kReportDescriptor.begin(), Surface::kReportDescriptor.end());
    const std::pair<std::string, int> rows[]{
        {surface, 0},
        {surface.substr(0, surface.size() / 2), 1},
        {"", 1},
    };
    std::filesystem::create_directory(folder.path("device"));
    EXPECT_EQ(check(folder.path(".")), 1);
    for (const auto& [descriptor, status] : rows) {
        folder.write("device/report_descriptor", descriptor);
        EXPECT_EQ(check(folder.path(".")), status) << descriptor.size();
    }
    std::filesystem::remove(folder.path("device/report_descriptor"));
    std::filesystem::create_directory(folder.path("device/report_descriptor"));
    EXPECT_EQ(check(folder.path(".")), 1) << "opened, but not read";
    for (const char* nothing : {"/sys/class/hidraw/hidraw9999", "/dev/null", "/dev/", "hidraw"})
        EXPECT_EQ(check(nothing), 1) << nothing;
}

} // namespace
} // namespace VeltoTouch::Tests
