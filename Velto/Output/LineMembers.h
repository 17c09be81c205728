#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace VeltoTouch::Velto {

// What a line needs to be one that a command printed with --jsonl.
struct LineOf {
    const char* command;

    // Returns the member. Throws std::invalid_argument if it is absent.
    template <class T>
    [[nodiscard]] T operator()(std::optional<T> member) const {
        if (!member)
            refuse();
        return *std::move(member);
    }

    [[noreturn]] void refuse() const { throw std::invalid_argument("no line of " + std::string(command) + " --jsonl"); }
};

} // namespace VeltoTouch::Velto
