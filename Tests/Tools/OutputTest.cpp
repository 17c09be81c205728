#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

namespace fs = std::filesystem;

class OutputTest : public testing::Test {
protected:
    static void expectFailure(const Outcome& outcome, const std::string& errors) {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, errors);
    }
    // Writes the recording as another file, which fails.
    void expectNotWritten(const std::string& path, const std::string& message) const {
        expectFailure(velto().run({"convert", file, "-o", path}), "velto: " + path + ": " + message + "\n");
    }

    const TemporaryFolder folder;
    const std::string text = SmallRecording().touchForMs(80).text();
    const std::string file = folder.write("in.json", text);
    const std::string old = folder.write("old.json", "as it was");
};

TEST_F(OutputTest, AFullOrClosedStandardOutputEndsTheWorkWithAFailure) {
    // So long that some of it is written before the end.
    const std::string longFile = folder.write("long.json", SmallRecording().images(300, {}).touchForMs(900).text());
    for (const Arguments& command : {
             Arguments{"replay", file},
             {"replay", "--jsonl", "--describe", file},
             {"convert", file},
             {"trim", "--max", "1000", file},
             {"render", file},
             {"info", file},
             {"info", "--json", file},
             {"replay", "--describe", longFile, longFile},
             {"replay", "--speed", "1e6", longFile, longFile},
             {"replay", "--jsonl", "--describe", longFile, longFile},
             {"replay", "--jsonl", "--speed", "1e6", longFile, longFile},
             {"render", longFile},
         }) {
        SCOPED_TRACE(testing::PrintToString(command));
        expectFailure(velto().writingTo("/dev/full").run(command), "velto: standard output: No space left on device\n");
        expectFailure(velto().writingToAClosedPipe().run(command), "");
    }
}

TEST_F(OutputTest, AFileAppearsWithNothingBesideItUnderAnyName) {
    const std::string longest = std::string(255, 'n');
    for (const std::string& name : {std::string("new.json"), longest}) {
        const Outcome outcome = velto().run({"convert", file, "-o", folder.path(name)});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.output + outcome.errors, "");
        EXPECT_EQ(contentOf(folder.path(name)), text);
    }
    EXPECT_EQ(velto().run({"convert", file, "-o", "-"}).output, text) << "a dash is the standard output";
    EXPECT_THAT(folder.names(), ElementsAre("in.json", "new.json", longest, "old.json"));
}

TEST_F(OutputTest, ARecordingCanBeReplacedByItself) {
    EXPECT_EQ(velto().run({"trim", file, "-o", file, "--max", "1"}).status, 0);
    EXPECT_EQ(contentOf(file), velto().reading(text).run({"trim", "--max", "1", "-"}).output);
}

TEST_F(OutputTest, AnOldFileKeepsItsPermissionsAndItsLinks) {
    constexpr auto kMode = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_write;
    fs::permissions(old, kMode);
    fs::create_directory(folder.path("below"));
    const std::string link = folder.path("below/link.json");
    fs::create_symlink("../old.json", link);
    EXPECT_EQ(velto().run({"convert", file, "-o", link}).status, 0);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(contentOf(old), text);
    EXPECT_EQ(fs::status(old).permissions(), kMode);
    fs::remove(link);
    EXPECT_TRUE(fs::is_empty(folder.path("below")));
    EXPECT_THAT(folder.names(), ElementsAre("below", "in.json", "old.json"));
}

TEST_F(OutputTest, AnOldFileStaysWhenTheNewOneCannotBeWrittenWhole) {
    for (const std::string& path : {old, folder.path("new.json")})
        expectFailure(velto().withFilesUpTo(1000).run({"convert", file, "-o", path}),
                      "velto: " + path + ": File too large\n");
    EXPECT_EQ(contentOf(old), "as it was");
    EXPECT_THAT(folder.names(), ElementsAre("in.json", "old.json"));
}

TEST_F(OutputTest, APlaceThatCannotBeWrittenIsToldUnderItsName) {
    fs::create_symlink("nothing.json", folder.path("link.json"));
    expectNotWritten(folder.path("link.json"), "No such file or directory");
    expectNotWritten(folder.path("missing/out.json"), "No such file or directory");
    expectNotWritten(folder.path("in.json/out.json"), "Not a directory");
    expectNotWritten(folder.path(""), "Is a directory");
    EXPECT_THAT(folder.names(), ElementsAre("in.json", "link.json", "old.json"));
}

TEST_F(OutputTest, WhatMayNotBeWrittenStays) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    fs::permissions(folder.path(""), fs::perms::owner_read | fs::perms::owner_exec);
    expectNotWritten(old, "Permission denied");
    fs::permissions(folder.path(""), fs::perms::owner_all);
    fs::permissions(old, fs::perms::owner_read);
    expectNotWritten(old, "Permission denied");
    EXPECT_EQ(contentOf(old), "as it was");
}

TEST_F(OutputTest, AFullDeviceIsToldUnderItsName) {
    // Root gets a device of its own: a fault that replaces it must not reach the machine's.
    std::string device = "/dev/full";
    if (::geteuid() == 0) {
        device = folder.path("full");
        if (::mknod(device.c_str(), S_IFCHR | 0600, makedev(1, 7)) != 0 || !std::ofstream(device))
            GTEST_SKIP() << "no devices in temporary folders";
    }
    expectNotWritten(device, "No space left on device");
    EXPECT_TRUE(fs::is_character_file(device));
}

TEST_F(OutputTest, APipeIsWrittenAsItIs) {
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reader = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK); // nobody waits for the other
    EXPECT_EQ(velto().run({"convert", file, "-o", pipe}).status, 0);
    std::string content(text.size(), '\0');
    EXPECT_EQ(::read(reader, content.data(), content.size()), static_cast<ssize_t>(text.size()));
    ::close(reader);
    EXPECT_EQ(content, text);
    EXPECT_TRUE(fs::is_fifo(pipe));
}

} // namespace
} // namespace VeltoTouch::Tests
