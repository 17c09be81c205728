#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace VeltoTouch {

struct Process {
    pid_t number;
    std::string name;
};

// Returns the processes that have a node below /dev open, by number. Only root sees those of other users. Any thread.
[[nodiscard]] std::vector<Process> processesWithOpen(const std::string& node);

} // namespace VeltoTouch
