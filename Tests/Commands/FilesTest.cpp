#include "Platform/Linux/FileDescriptor.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/SmallRecordings.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

namespace fs = std::filesystem;

class FilesTest : public testing::Test {
protected:
    // Runs the command over its files; the complaint is one line, and about the bad one. Gives the output.
    static std::string outputWhenRefused(Arguments command, const Arguments& files, const std::string& message) {
        SCOPED_TRACE(testing::PrintToString(command));
        command.insert(command.end(), files.begin(), files.end());
        const Outcome outcome = velto().reading("{").run(command);
        EXPECT_THAT(outcome, Ends(1, testing::_, "velto: " + files.front() + ": " + message + "\n"));
        return outcome.output;
    }
    // Writes the recording as another file, which fails.
    void expectNotWritten(const std::string& path, const std::string& message, std::size_t largest = 1'000'000) const {
        EXPECT_THAT(velto().withFilesUpTo(largest).run({"convert", file, "-o", path}),
                    Ends(1, "", "velto: " + path + ": " + message + "\n"));
    }

    const TemporaryFolder folder;
    const std::string text = SmallRecording().touchForMs(80).text();
    const std::string file = folder.write("in.json", text);
    const std::string old = folder.write("old.json", "as it was");
    const std::string failed = "migrateSerializedContainer failed: ";
    const std::string noContainer = failed + "invalid container";
};

TEST_F(FilesTest, BadInputIsToldInOneLineAndLeavesTheOutputFileAsItWas) {
    const std::string deep = std::string(200'000, '[') + std::string(200'000, ']');
    for (const auto& [content, message] : std::vector<std::pair<std::string, std::string>>{
             {"", noContainer + " (byte 0: the text ends too early)"},
             {std::string(3'000'000, ' '), noContainer + " (byte 3000000: the text ends too early)"},
             {text + '\0', noContainer + " (byte " + std::to_string(text.size()) + ": expected the end of the text)"},
             {deep, noContainer + " (byte 1024: nested too deep)"},
             {"[]", noContainer},
             {R"({"Version":2,"Frames":[{"Type":1}]})", "invalid frame type (Frames[0])"},
             {R"({"Version":0,"Reports":[7]})", failed + "invalid frame (Reports[0])"},
         }) {
        const std::string bad = folder.write("bad.json", content);
        outputWhenRefused({"convert", "-o", old}, {bad}, message);
        outputWhenRefused({"trim", "--max", "1", "-o", folder.path("new.json")}, {bad}, message);
        EXPECT_EQ(contentOf(old), "as it was");
        EXPECT_THAT(folder.names(), ElementsAre("bad.json", "in.json", "old.json"));
    }
}

TEST_F(FilesTest, BadInputIsRefusedByEveryCommandInTheWordsOfTheSystemAndOtherFilesAreStillHandled) {
    for (const auto& [bad, message] : std::vector<std::pair<std::string, std::string>>{
             {folder.write("bad.json", text.substr(0, 1000)),
              noContainer + " (byte 1000: the text ends inside a string)"},
             {"-", noContainer + " (byte 1: the text ends inside an object)"},
             {folder.path("missing.json"), "No such file or directory"},
             {file + "/below", "Not a directory"},
         }) {
        for (const Arguments& command :
             {Arguments{"replay"}, {"replay", "--jsonl", "--describe"}, {"info"}, {"info", "--json"}}) {
            Arguments withGoodFile = command;
            withGoodFile.push_back(file);
            EXPECT_EQ(outputWhenRefused(command, {bad, file}, message), velto().run(withGoodFile).output);
        }
        for (const Arguments& command : {Arguments{"convert"}, {"trim", "--max", "1"}, {"render"}})
            EXPECT_EQ(outputWhenRefused(command, {bad}, message), "");
    }
}

TEST_F(FilesTest, AFolderStandsForTheRecordingsBelowItInTheOrderOfTheirPathsOrFailsAlone) {
    const std::string corpus = folder.path("corpus");
    fs::create_directories(corpus + "/b/c.json");
    for (const std::string name : {"b/2.json", "b/c.json/1.json", "b.json", "Z.json", "a\xff.json", "notes.txt"})
        folder.write("corpus/" + name, text);
    fs::create_directory_symlink(corpus, corpus + "/loop");
    fs::create_symlink("nothing", corpus + "/lost.json");
    const std::string lost = "velto: " + corpus + "/lost.json: No such file or directory\n";

    const Outcome replayed = velto().run({"replay", "--jsonl", corpus + "/", file});
    EXPECT_THAT(replayed, Ends(1, testing::_, lost));
    auto files = membersOf(replayed.output, "file");
    EXPECT_EQ(files.size(), linesOf(replayed.output).size());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    const auto quoted = [](const std::string& path) { return '"' + path + '"'; };
    EXPECT_THAT(files, ElementsAre(quoted(corpus + "/Z.json"), quoted(corpus + "/a\xef\xbf\xbd.json"),
                                   quoted(corpus + "/b.json"), quoted(corpus + "/b/2.json"),
                                   quoted(corpus + "/b/c.json/1.json"), quoted(file)));
    const Outcome told = velto().run({"info", "--json", corpus, file});
    EXPECT_THAT(told, Ends(1, testing::_, lost));
    EXPECT_EQ(membersOf(told.output, "file"), files);

    const std::string empty = folder.path("empty");
    fs::create_directory(empty);
    EXPECT_EQ(outputWhenRefused({"info"}, {empty, file}, "no recordings (*.json) in this folder"),
              velto().run({"info", file}).output);
    EXPECT_EQ(outputWhenRefused({"convert"}, {corpus}, "Is a directory"), "");
}

TEST_F(FilesTest, NoNameSteersTheTerminal) {
    const std::string raw = "a\x1b[31m\x7f\xc2\x9b\xe2\x80\xae\xff\n\xc3\xa4\\\"";
    const std::string shown = R"(a\u001b[31m\u007f\u009b\u202e\xff\n)"
                              "\xc3\xa4\\\"";
    const std::string named = folder.write(raw, text);
    for (const char* command : {"info", "replay"})
        EXPECT_THAT(velto().run({command, named}).output, testing::StartsWith(folder.path(shown) + "\n"));
    const std::string missing = "velto: " + folder.path(shown) + "x: No such file or directory\n";
    EXPECT_THAT(velto().run({"info", named + "x"}), Ends(1, "", missing));
    EXPECT_THAT(velto().run({"run", "--device", "replay:" + named + "x"}), Ends(1, "", missing));
    EXPECT_THAT(velto().run({raw}), Ends(2, "", testing::HasSubstr(shown)));
    EXPECT_THAT(velto().run({"replay", "--jsonl", named}).output,
                testing::HasSubstr("a\\u001b[31m\x7f\xc2\x9b\xe2\x80\xae\xef\xbf\xbd\\n\xc3\xa4\\\\\\\"\""));
}

TEST_F(FilesTest, AFullOrClosedStandardOutputEndsTheWorkWithAFailure) {
    // So long that some of it is written before the end.
    const std::string longFile = folder.write("long.json", SmallRecording().images(300, {}).touchForMs(900).text());
    for (const Arguments& command : {Arguments{"--help"},
                                     {"replay", file},
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
                                     {"render", longFile}}) {
        SCOPED_TRACE(testing::PrintToString(command));
        EXPECT_THAT(velto().writingTo("/dev/full").run(command),
                    Ends(1, "", "velto: standard output: No space left on device\n"));
        EXPECT_THAT(velto().writingToAClosedPipe().run(command), Ends(1, ""));
    }
}

TEST_F(FilesTest, AFileAppearsWithNothingBesideItUnderAnyNameAndAnywhere) {
    const std::string longest = std::string(255, 'n');
    for (const std::string& name : {std::string("new.json"), longest}) {
        EXPECT_THAT(velto().run({"convert", file, "-o", folder.path(name)}), Ends(0, ""));
        EXPECT_EQ(contentOf(folder.path(name)), text);
    }
    EXPECT_EQ(velto().run({"convert", file, "-o", "-"}).output, text) << "a dash is the standard output";
    const std::string shared = "/dev/shm/velto-test-" + std::to_string(::getpid()) + ".json";
    for (int time = 0; time < 2; ++time) {
        EXPECT_THAT(velto().run({"convert", file, "-o", shared}), Ends(0, ""));
        EXPECT_EQ(contentOf(shared), text) << "a file below /dev";
    }
    fs::remove(shared);
    const int redirected = ::open(old.c_str(), O_WRONLY | O_APPEND);
    EXPECT_THAT(velto().run({"convert", file, "-o",
                             "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(redirected)}),
                Ends(0, ""));
    ::close(redirected);
    EXPECT_EQ(contentOf(old), "as it was" + text) << "an open descriptor";
    EXPECT_THAT(velto().run({"trim", file, "-o", file, "--max", "1"}), Ends(0, "")) << "replaced by itself";
    EXPECT_EQ(contentOf(file), velto().reading(text).run({"trim", "--max", "1", "-"}).output);
    EXPECT_THAT(folder.names(), ElementsAre("in.json", "new.json", longest, "old.json"));
}

TEST_F(FilesTest, AnOldFileKeepsItsLinksItsOwnerAndItsRightsButNothingThatRunsAsItsOwner) {
    constexpr auto kRights = fs::perms::owner_all | fs::perms::group_write | fs::perms::others_exec;
    constexpr uid_t kAnother = 65534;
    const bool isRoot = ::geteuid() == 0;
    const uid_t owner = isRoot ? kAnother : ::geteuid();
    ASSERT_EQ(::chown(old.c_str(), owner, isRoot ? kAnother : ::getegid()), 0);
    fs::permissions(old, kRights | fs::perms::set_uid | fs::perms::set_gid | fs::perms::sticky_bit);
    fs::create_directory(folder.path("below"));
    const std::string link = folder.path("below/link.json");
    fs::create_symlink("../old.json", link);
    EXPECT_THAT(velto().run({"convert", file, "-o", link}), Ends(0, ""));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(contentOf(old), text);
    EXPECT_EQ(fs::status(old).permissions(), kRights);
    struct stat status {};
    EXPECT_EQ(::stat(old.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, owner);

    fs::permissions(folder.path("below"), fs::perms::all | fs::perms::sticky_bit);
    if (isRoot && ::lchown(link.c_str(), kAnother, kAnother) == 0)
        expectNotWritten(link, "a link of another user, in a folder where others may write");
    fs::remove(link);
    EXPECT_TRUE(fs::is_empty(folder.path("below")));
    EXPECT_THAT(folder.names(), ElementsAre("below", "in.json", "old.json"));
}

TEST_F(FilesTest, WhereOwnerOrGroupCannotBeKeptNobodyGetsTheirRights) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root to make files of two users";
    fs::permissions(folder.path(""), fs::perms::all);
    fs::permissions(old, fs::perms::all);
    fs::permissions(file, fs::perms::all);
    EXPECT_THAT(velto().asAnotherUser().run({"convert", file, "-o", old}),
                Ends(1, "", "velto: " + old + ": it belongs to another user, in a folder where others may write\n"));
    EXPECT_EQ(contentOf(old), "as it was");

    ASSERT_EQ(::chown(old.c_str(), 65534, 0), 0);
    fs::permissions(old, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_all);
    EXPECT_THAT(velto().asAnotherUser().run({"convert", file, "-o", old}), Ends(0, ""));
    EXPECT_EQ(fs::status(old).permissions(), fs::perms::owner_read | fs::perms::owner_write)
        << "another group has no right to it";
}

TEST_F(FilesTest, ASignalLeavesNoTemporaryFileAndSIGKILLNoneOfANewFile) {
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
        EXPECT_THAT(folder.names(), ElementsAre("in.json", "new.json", "old.json"));
    }
}

TEST_F(FilesTest, WhatCannotBeWrittenWholeIsToldAndAnOldFileStays) {
    fs::create_symlink("nothing.json", folder.path("link.json"));
    expectNotWritten(folder.path("link.json"), "No such file or directory");
    expectNotWritten(folder.path("missing/out.json"), "No such file or directory");
    expectNotWritten(folder.path("in.json/out.json"), "Not a directory");
    expectNotWritten(folder.path(""), "Is a directory");
    expectNotWritten(folder.path("new.json"), "File too large", 1000);
    expectNotWritten(old, "File too large", 1000);
    EXPECT_EQ(contentOf(old), "as it was");
    EXPECT_THAT(folder.names(), ElementsAre("in.json", "link.json", "old.json"));
}

TEST_F(FilesTest, WhatMayNotBeWrittenStays) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    fs::permissions(folder.path(""), fs::perms::owner_read | fs::perms::owner_exec);
    expectNotWritten(old, "Permission denied");
    fs::permissions(folder.path(""), fs::perms::owner_all);
    fs::permissions(old, fs::perms::owner_read);
    expectNotWritten(old, "Permission denied");
    EXPECT_EQ(contentOf(old), "as it was");
}

TEST_F(FilesTest, AFullDeviceIsToldUnderItsName) {
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

TEST_F(FilesTest, APipeIsWrittenAsItIs) {
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reader = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK); // nobody waits for the other
    EXPECT_THAT(velto().run({"convert", file, "-o", pipe}), Ends(0, ""));
    std::string content(text.size(), '\0');
    EXPECT_EQ(::read(reader, content.data(), content.size()), static_cast<ssize_t>(text.size()));
    ::close(reader);
    EXPECT_EQ(content, text);
    EXPECT_TRUE(fs::is_fifo(pipe));
}

} // namespace
} // namespace VeltoTouch::Tests
