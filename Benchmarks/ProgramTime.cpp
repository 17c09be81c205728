#include "Benchmarks/ProgramTime.h"

#include <chrono>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VeltoTouch::Benchmarks {
namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

} // namespace

ProgramTime timeOfVelto(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VELTO_PROGRAM);
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    const int failure = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage{};
    if (failure != 0 || wait4(child, &status, 0, &usage) != child || status != 0)
        return {};
    return {.cpu = seconds(usage.ru_utime) + seconds(usage.ru_stime),
            .wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()};
}

} // namespace VeltoTouch::Benchmarks
