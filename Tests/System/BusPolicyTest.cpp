#include "Tests/System/Guest.h"

#include <csignal>
#include <fstream>
#include <memory>

#include <grp.h>
#include <pwd.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

constexpr int kSawIt = 0;

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
        ASSERT_TRUE(eventually([this] { return call("root", "org.velto.Touch1", "Peer.Ping").status == 0; }))
            << call("root", "org.velto.Touch1", "Peer.Ping").output;
    }

    [[nodiscard]] static Outcome as(const std::string& user, const std::string& command) {
        return shell("setpriv --reuid=" + user + " --regid=" + user + " --init-groups " + command);
    }
    // "INTERFACE.MEMBER ARGUMENT...", as busctl has them; without an interface, one of ours.
    [[nodiscard]] Outcome call(const std::string& user, const std::string& name, const std::string& what) const {
        const auto dot = what.find('.');
        const bool isOurs = dot > what.find(' ');
        const std::string path = what.starts_with("ObjectManager") ? "" : "/" + surface.name();
        const std::string interface = isOurs ? "org.velto.Touch1" : "org.freedesktop.DBus." + what.substr(0, dot);
        return as(user, "busctl call " + name + " /org/velto/Touch1" + path + " " + interface + " " +
                            (isOurs ? what : what.substr(dot + 1)));
    }
};

TEST_F(BusPolicyTest, WhoMayCallWhat) {
    const std::string shared = "org.velto.Touch1";
    const std::string own = shared + "." + surface.name();
    const struct {
        std::string name;
        std::string call;
        bool isForSitters;
    } calls[]{
        {shared, "GetPublicProperty s Pipeline.Algs.HoldTimeoutMilliseconds", true},
        {own, "GetPublicProperty s Pipeline.Algs.HoldTimeoutMilliseconds", true},
        {shared, "GetProperty s Recording", false},
        {own, "GetProperty s Pipeline.Algs.HoldTimeoutMilliseconds", false},
        {shared, "SetProperty sv Pipeline.Algs.HoldTimeoutMilliseconds u 400", false},
        {own, "SetProperty sv Pipeline.Algs.HoldTimeoutMilliseconds u 400", false},
        {own, "GetSources", true},
        {own, "Reload", false},
        {shared, "Properties.Get ss org.velto.Touch1 Device", true},
        {own, "Properties.GetAll s org.velto.Touch1", true},
        {shared, "Introspectable.Introspect", true},
        {own, "ObjectManager.GetManagedObjects", true},
        {shared, "Peer.Ping", true},
    };
    const auto isDenied = [](const Outcome& outcome) {
        return outcome.status != 0 && outcome.output.find("Access denied") != std::string::npos;
    };
    for (const auto& [name, what, isForSitters] : calls) {
        SCOPED_TRACE(what + " of " + name);
        const Outcome member = call("member", name, what);
        EXPECT_EQ(member.status, 0) << member.output;
        const Outcome sitter = call("sitter", name, what);
        EXPECT_TRUE(isForSitters ? sitter.status == 0 : isDenied(sitter)) << sitter.output;
        const Outcome visitor = call("visitor", name, what);
        EXPECT_TRUE(isDenied(visitor)) << visitor.output;
    }
}

TEST_F(BusPolicyTest, TheProgramGetsAlongWithIt) {
    const std::string key = "Pipeline.Algs.HoldTimeoutMilliseconds";
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
        ::alarm(30);
        const passwd* user = ::getpwnam(name);
        sd_bus* bus = nullptr;
        const auto gesture = [](sd_bus_message*, void*, sd_bus_error*) -> int { ::_exit(kSawIt); };
        if (user == nullptr || ::initgroups(name, user->pw_gid) != 0 || ::setgid(user->pw_gid) != 0 ||
            ::setuid(user->pw_uid) != 0 || sd_bus_open_system(&bus) < 0 ||
            sd_bus_match_signal(bus, nullptr, nullptr, nullptr, "org.velto.Touch1", "Gesture", gesture, nullptr) < 0 ||
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
    surface.tapPlayPause();
    EXPECT_EQ(sitter.wait(), kSawIt);
    EXPECT_EQ(member.wait(), kSawIt);
    EXPECT_EQ(visitor.end(), -1) << "a stranger saw a gesture, or could not listen";
}

} // namespace
} // namespace VeltoTouch::Tests
