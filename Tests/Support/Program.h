#pragma once

#include "Tests/Support/Eventually.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

// The built program and files for it.

namespace VeltoTouch::Tests {

using Arguments = std::vector<std::string>;

// A folder of a test's own, gone with it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "velto.XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        _path = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(_path); }

    [[nodiscard]] std::string path(const std::string& name) const { return (_path / name).string(); }

    // Writes a file and gives its path.
    std::string write(const std::string& name, std::string_view content) const {
        std::ofstream(_path / name, std::ios::binary) << content;
        return path(name);
    }

    // The names of what is in it, sorted.
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(_path))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path _path;
};

inline std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// What a run of the program came to.
struct Outcome {
    int status = 0; // exit status; 128 and more: the signal that ended it
    std::string output;
    std::string errors;
};

// Matches a run by its exit status and by what it wrote.
inline testing::Matcher<Outcome> Ends(int status, const testing::Matcher<std::string>& output,
                                      const testing::Matcher<std::string>& errors = "") {
    return testing::AllOf(testing::Field("status", &Outcome::status, status),
                          testing::Field("output", &Outcome::output, output),
                          testing::Field("errors", &Outcome::errors, errors));
}

// A run of the program that goes on beside the test, and ends with it at the latest.
class Background {
public:
    explicit Background(pid_t child) noexcept : _child(child) {}
    Background(Background&& other) noexcept : _child(std::exchange(other._child, -1)) {}
    Background& operator=(Background&&) = delete;
    ~Background() {
        if (_child < 0)
            return;
        signal(SIGKILL);
        std::ignore = waitForTheEnd();
    }

    void signal(int number) const { ::kill(_child, number); }
    [[nodiscard]] std::size_t residentKilobytes() const {
        std::ifstream status("/proc/" + std::to_string(_child) + "/status");
        for (std::string name; status >> name;) {
            std::size_t kilobytes = 0;
            if (name == "VmRSS:" && status >> kilobytes)
                return kilobytes;
        }
        throw std::runtime_error("the program has ended");
    }
    // The exit status, or 128 and the signal that it ended by.
    [[nodiscard]] int waitForTheEnd() {
        int status = 0;
        ::waitpid(std::exchange(_child, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    pid_t _child;
};

// One run of the program: velto().run({"replay", "taps.json"}).
class Program {
public:
    // The standard output goes there in place of being captured.
    Program& writingTo(const std::string& path) {
        _output = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        return *this;
    }
    // The program gets the signal as soon as it has written a line.
    Program& signalledAfterALine(int signal) {
        _signal = signal;
        return *this;
    }

    // Its standard output is for `writingTo`, or for nobody.
    [[nodiscard]] Background inBackground(const Arguments& arguments) {
        if (_output < 0)
            writingTo("/dev/null");
        const pid_t child = start(arguments, _output);
        ::close(_output);
        return Background(child);
    }

    [[nodiscard]] Outcome run(const Arguments& arguments) {
        const auto [reader, writer] = makePipe();
        const pid_t child = start(arguments, _output >= 0 ? _output : writer);
        ::close(writer);
        ::close(_output);
        Outcome outcome;
        char bytes[4096];
        for (ssize_t count = 0; (count = ::read(reader, bytes, sizeof bytes)) > 0;) {
            outcome.output.append(bytes, static_cast<std::size_t>(count));
            if (_signal && outcome.output.find('\n') != std::string::npos)
                ::kill(child, *std::exchange(_signal, std::nullopt));
        }
        ::close(reader);
        int status = 0;
        if (::waitpid(child, &status, 0) != child)
            throw std::runtime_error("the program was not run");
        outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        std::rewind(_errors.get());
        for (int c = std::fgetc(_errors.get()); c != EOF; c = std::fgetc(_errors.get()))
            outcome.errors += static_cast<char>(c);
        return outcome;
    }

private:
    static std::pair<int, int> makePipe() {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        return {ends[0], ends[1]};
    }

    [[nodiscard]] pid_t start(const Arguments& arguments, int output) const {
        std::vector<char*> argv{const_cast<char*>("velto")};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        const pid_t child = ::fork();
        if (child == 0)
            become(argv, output);
        if (child < 0)
            throw std::runtime_error("no process");
        return child;
    }

    // The rest of the forked child: calls that are safe there, then the program.
    [[noreturn]] void become(const std::vector<char*>& argv, int output) const {
        ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(::fileno(_errors.get()), STDERR_FILENO);
        ::unsetenv("VELTO_LOG");
        ::execv(VELTO_PROGRAM, argv.data());
        ::_exit(127);
    }

    std::shared_ptr<std::FILE> _errors{std::tmpfile(), std::fclose};
    int _output = -1; // a descriptor, where the output is not captured
    std::optional<int> _signal;
};

[[nodiscard]] inline Program velto() { return {}; }

} // namespace VeltoTouch::Tests
