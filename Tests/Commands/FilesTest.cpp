#include "Platform/FileDescriptor.h"
#include "Tests/Support/Program.h"

#include <poll.h>
#include <sys/inotify.h>

namespace VeltoTouch::Tests {
namespace {

TEST(FilesTest, ASignalLeavesNoTemporaryFileAndSIGKILLNoneOfANewFile) {
    const TemporaryFolder folder;
    const std::string text = contentOf(VELTO_SAMPLES "/taps.json");
    const std::string file = folder.write("in.json", text);
    folder.write("old.json", "as it was");
    const FileDescriptor unnamed(::open(folder.path("").c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    for (const auto& [name, signal] :
         {std::pair("new.json", unnamed.isOpen() ? SIGKILL : SIGTERM), {"old.json", SIGTERM}, {"old.json", SIGHUP}}) {
        const FileDescriptor changes(::inotify_init1(IN_CLOEXEC));
        ASSERT_GE(::inotify_add_watch(changes.get(), folder.path("").c_str(), IN_CREATE), 0);
        Background convert = velto().inBackground({"convert", file, "-o", folder.path(name)});
        pollfd change{.fd = changes.get(), .events = POLLIN, .revents = 0};
        ASSERT_EQ(::poll(&change, 1, 10'000), 1) << "nothing came into the folder";
        convert.signal(signal);
        std::ignore = convert.waitForTheEnd();
        EXPECT_EQ(contentOf(folder.path(name)), text) << name;
        EXPECT_THAT(folder.names(), testing::ElementsAre("in.json", "new.json", "old.json"));
    }
}

} // namespace
} // namespace VeltoTouch::Tests
