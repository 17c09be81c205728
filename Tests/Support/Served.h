#pragma once

#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <sys/types.h>

// What tests look at in a program that serves a surface.

namespace VeltoTouch::Tests {

// What lines of events say without their times: names of gestures, frames and regions. A recorded event and one told on
// the bus differ in what else they say.
inline std::vector<std::string> gesturesIn(const std::string& lines) {
    std::vector<std::string> gestures;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const auto start = line.find("\"gesture\":");
        if (start != std::string::npos)
            gestures.push_back(line.substr(start, line.find(",\"phase\"") - start));
    }
    return gestures;
}

inline std::size_t residentKilobytes(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string name; status >> name;) {
        std::size_t kilobytes = 0;
        if (name == "VmRSS:" && status >> kilobytes)
            return kilobytes;
    }
    return 0;
}

} // namespace VeltoTouch::Tests
