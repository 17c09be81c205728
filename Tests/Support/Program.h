#pragma once

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
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
        std::ofstream file(_path / name, std::ios::binary);
        file << content;
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

// One run of the program: velto().reading("...").run({"replay", "-"}).
class Program {
public:
    // What stands on the standard input; nothing by default.
    Program& reading(std::string input) {
        _input = std::move(input);
        return *this;
    }
    // The standard output goes there in place of being captured.
    Program& writingTo(const std::string& path) {
        _output = Descriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
        return *this;
    }
    // Nobody reads the standard output any more.
    Program& writingToAClosedPipe() {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        const Descriptor readEnd(ends[0]);
        _output = Descriptor(ends[1]);
        return *this;
    }
    // No file becomes larger than that.
    Program& withFilesUpTo(std::size_t bytes) {
        _largestFile = bytes;
        return *this;
    }

    [[nodiscard]] Outcome run(const Arguments& arguments) const {
        const Descriptor input(::memfd_create("stdin", MFD_CLOEXEC));
        const Descriptor output(::memfd_create("stdout", MFD_CLOEXEC));
        const Descriptor errors(::memfd_create("stderr", MFD_CLOEXEC));
        std::string_view rest = _input;
        while (!rest.empty()) {
            const ssize_t written = ::write(input.get(), rest.data(), rest.size());
            if (written < 0)
                throw std::runtime_error("no standard input");
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
        ::lseek(input.get(), 0, SEEK_SET);

        std::vector<char*> argv{const_cast<char*>("velto")};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        const pid_t child = ::fork();
        if (child == 0)
            become(argv, input.get(), _output ? _output->get() : output.get(), errors.get());
        int status = 0;
        if (child < 0 || ::waitpid(child, &status, 0) != child)
            throw std::runtime_error("the program was not run");
        return {.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                .output = output.content(),
                .errors = errors.content()};
    }

private:
    class Descriptor {
    public:
        explicit Descriptor(int descriptor) : _descriptor(descriptor) {
            if (descriptor < 0)
                throw std::runtime_error("no file");
        }
        Descriptor(Descriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
        Descriptor& operator=(Descriptor&& other) noexcept {
            std::swap(_descriptor, other._descriptor);
            return *this;
        }
        ~Descriptor() {
            if (_descriptor >= 0)
                ::close(_descriptor);
        }
        [[nodiscard]] int get() const noexcept { return _descriptor; }
        [[nodiscard]] std::string content() const {
            std::string text(static_cast<std::size_t>(::lseek(_descriptor, 0, SEEK_END)), '\0');
            const ssize_t size = ::pread(_descriptor, text.data(), text.size(), 0);
            if (size != static_cast<ssize_t>(text.size()))
                throw std::runtime_error("output not read");
            return text;
        }

    private:
        int _descriptor;
    };

    // The rest of the forked child: calls that are safe there, then the program.
    [[noreturn]] void become(const std::vector<char*>& argv, int input, int output, int errors) const {
        ::dup2(input, STDIN_FILENO);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(errors, STDERR_FILENO);
        if (_largestFile) {
            const rlimit limit{.rlim_cur = *_largestFile, .rlim_max = *_largestFile};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            ::signal(SIGXFSZ, SIG_IGN); // the write fails in place of a signal
        }
        ::unsetenv("VELTO_LOG");
        ::execv(VELTO_PROGRAM, argv.data());
        ::_exit(127);
    }

    std::string _input;
    std::optional<Descriptor> _output;
    std::optional<std::size_t> _largestFile;
};

[[nodiscard]] inline Program velto() { return {}; }

} // namespace VeltoTouch::Tests
