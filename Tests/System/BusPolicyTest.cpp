#include "Tests/System/Guest.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include <grp.h>
#include <pwd.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

constexpr int kSawIt = 0;
constexpr const char* kInterface = "org.velto.Touch1";
constexpr const char* kKey = "Pipeline.Algs.HoldTimeoutMilliseconds";

// For a process of the user's own, which ends where this is not to be had, and after a minute.
sd_bus* busAs(const char* name) {
    ::alarm(60);
    const passwd* user = ::getpwnam(name);
    sd_bus* bus = nullptr;
    if (user == nullptr || ::initgroups(name, user->pw_gid) != 0 || ::setgid(user->pw_gid) != 0 ||
        ::setuid(user->pw_uid) != 0 || sd_bus_open_system(&bus) < 0) {
        std::fprintf(stderr, "%s has no bus\n", name);
        ::_exit(1);
    }
    return bus;
}

struct Call {
    std::string name;
    std::string path;
    const char* interface;
    const char* member;
    int (*addArguments)(sd_bus_message*);

    // The error's name, or "" for an answer.
    [[nodiscard]] std::string failureOn(sd_bus* bus) const {
        sd_bus_message* message = nullptr;
        sd_bus_error error = SD_BUS_ERROR_NULL;
        if (sd_bus_message_new_method_call(bus, &message, name.c_str(), path.c_str(), interface, member) < 0 ||
            addArguments(message) < 0)
            return "not sent";
        return sd_bus_call(bus, message, 0, &error, nullptr) < 0 ? error.name : "";
    }
};

// What came of each call when this user made them.
std::vector<std::string> failuresFor(const char* user, std::span<const Call> calls) {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t process = ::fork();
    if (process == 0) {
        sd_bus* bus = busAs(user);
        for (const Call& call : calls)
            ::dprintf(ends[1], "%s\n", call.failureOn(bus).c_str());
        ::_exit(0);
    }
    ::close(ends[1]);
    std::vector<std::string> failures;
    std::FILE* lines = ::fdopen(ends[0], "r");
    for (char line[200]; std::fgets(line, sizeof line, lines) != nullptr;)
        failures.emplace_back(line, std::strlen(line) - 1);
    std::fclose(lines);
    ::waitpid(process, nullptr, 0);
    return failures;
}

// Three users: "sitter" sits at the machine, "member" is of the surface's group, "visitor" is neither.
class BusPolicyTest : public testing::Test {
protected:
    ServedSurface surface;

    static void SetUpTestSuite() {
        // As the system's login service tells it.
        std::filesystem::create_directories("/run/systemd/users");
        std::ofstream("/run/systemd/users/" + shell("id --user sitter").output)
            << "NAME=sitter\nSTATE=active\nSEATS=seat0\nACTIVE_SEATS=seat0\nONLINE_SEATS=seat0\n";
    }
    void SetUp() override {
        ASSERT_TRUE(surface.waitUntilServed());
        const std::string ping = "busctl call org.velto.Touch1 " + path() + " org.freedesktop.DBus.Peer Ping";
        ASSERT_TRUE(eventually([&] { return shell(ping).status == 0; })) << shell(ping).output;
    }

    [[nodiscard]] std::string path() const { return "/org/velto/Touch1/" + surface.name(); }
    [[nodiscard]] static Outcome as(const std::string& user, const std::string& command) {
        return shell("setpriv --reuid=" + user + " --regid=" + user + " --init-groups " + command);
    }
};

TEST_F(BusPolicyTest, WhoMayCallWhat) {
    const std::string shared = "org.velto.Touch1";
    const std::string own = shared + "." + surface.name();
    const char* const properties = "org.freedesktop.DBus.Properties";
    const auto nothing = [](sd_bus_message*) { return 0; };
    const auto key = [](sd_bus_message* message) { return sd_bus_message_append(message, "s", kKey); };
    const auto recording = [](sd_bus_message* message) { return sd_bus_message_append(message, "s", "Recording"); };
    const auto value = [](sd_bus_message* message) { return sd_bus_message_append(message, "sv", kKey, "u", 400); };
    const auto device = [](sd_bus_message* message) {
        return sd_bus_message_append(message, "ss", kInterface, "Device");
    };
    const auto all = [](sd_bus_message* message) { return sd_bus_message_append(message, "s", kInterface); };
    const struct {
        Call call;
        bool isForSitters;
    } rows[]{
        {{shared, path(), kInterface, "GetPublicProperty", key}, true},
        {{own, path(), kInterface, "GetPublicProperty", key}, true},
        {{shared, path(), kInterface, "GetProperty", recording}, false},
        {{own, path(), kInterface, "GetProperty", key}, false},
        {{shared, path(), kInterface, "SetProperty", value}, false},
        {{own, path(), kInterface, "SetProperty", value}, false},
        {{own, path(), kInterface, "GetSources", nothing}, true},
        {{own, path(), kInterface, "Reload", nothing}, false},
        {{shared, path(), properties, "Get", device}, true},
        {{own, path(), properties, "GetAll", all}, true},
        {{shared, path(), "org.freedesktop.DBus.Introspectable", "Introspect", nothing}, true},
        {{own, "/org/velto/Touch1", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", nothing}, true},
        {{shared, path(), "org.freedesktop.DBus.Peer", "Ping", nothing}, true},
    };
    std::vector<Call> calls;
    for (const auto& row : rows)
        calls.push_back(row.call);
    const std::vector<std::string> member = failuresFor("member", calls);
    const std::vector<std::string> sitter = failuresFor("sitter", calls);
    const std::vector<std::string> visitor = failuresFor("visitor", calls);
    ASSERT_THAT((std::vector{member.size(), sitter.size(), visitor.size()}), testing::Each(std::size(rows)));
    const std::string denied = SD_BUS_ERROR_ACCESS_DENIED;
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(std::string(calls[i].member) + " of " + calls[i].name);
        EXPECT_EQ(member[i], "");
        EXPECT_EQ(sitter[i], rows[i].isForSitters ? "" : denied);
        EXPECT_EQ(visitor[i], denied);
    }
}

TEST_F(BusPolicyTest, TheProgramGetsAlongWithIt) {
    const std::string key = kKey;
    const struct {
        const char* user;
        std::string command;
        int status;
    } rows[]{
        {"member", "set " + key + "=450", 0},        {"sitter", "get", 0},
        {"sitter", "set " + key + "=300", 1},        {"sitter", "record -o /tmp/sitter.json", 1},
        {"member", "record -o /tmp/member.json", 0},
    };
    for (const auto& [user, command, status] : rows) {
        const Outcome outcome = as(user, "velto " + command);
        EXPECT_EQ(outcome.status, status) << user << ", " << command << ": " << outcome.output;
    }
    EXPECT_EQ(as("sitter", "velto get " + key).output, "450");
}

// The process of a user who waits for a gesture. Its exit status is kSawIt when one came.
class Listener {
public:
    explicit Listener(const char* user) {
        int ready[2];
        EXPECT_EQ(::pipe(ready), 0);
        _process = ::fork();
        if (_process == 0)
            listen(user, ready[1]);
        ::close(ready[1]);
        char byte = 0;
        EXPECT_EQ(::read(ready[0], &byte, 1), 1) << user << " could not listen";
        ::close(ready[0]);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { std::ignore = end(); }

    // Its exit status, or -1 for one that was ended by end().
    [[nodiscard]] int wait() {
        int status = 0;
        ::waitpid(std::exchange(_process, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    [[nodiscard]] int end() {
        if (_process <= 0)
            return -1;
        ::kill(_process, SIGKILL);
        return wait();
    }

private:
    [[noreturn]] static void listen(const char* name, int ready) {
        sd_bus* bus = busAs(name);
        const auto gesture = [](sd_bus_message*, void*, sd_bus_error*) -> int { ::_exit(kSawIt); };
        if (sd_bus_match_signal(bus, nullptr, nullptr, nullptr, kInterface, "Gesture", gesture, nullptr) < 0 ||
            ::write(ready, "r", 1) != 1)
            ::_exit(1);
        while (sd_bus_process(bus, nullptr) >= 0)
            sd_bus_wait(bus, 1'000'000);
        ::_exit(1);
    }

    pid_t _process = -1;
};

TEST_F(BusPolicyTest, WhoHearsOfGestures) {
    Listener visitor("visitor"); // before the others, so that it would be told first
    Listener sitter("sitter");
    Listener member("member");
    surface.play("tap:play-pause");
    EXPECT_EQ(sitter.wait(), kSawIt);
    EXPECT_EQ(member.wait(), kSawIt);
    EXPECT_EQ(visitor.end(), -1) << "a stranger saw a gesture, or could not listen";
}

} // namespace
} // namespace VeltoTouch::Tests
