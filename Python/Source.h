#pragma once

#include "Python/Recording.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <pybind11/pybind11.h>

namespace VeltoTouch::Python {

// What a recording is read from: a path, or the bytes of one.
class Source {
public:
    // Raises TypeError for neither, ValueError for a path with a null byte.
    explicit Source(const pybind11::object& source);
    // The bytes are those of `file`, which is empty if there is none.
    Source(const pybind11::bytes& content, std::string file) : _file(std::move(file)) { hold(content); }

    [[nodiscard]] std::string name() const { return shownName(_file); }

    // Throws std::system_error for the file, std::invalid_argument for its content, in the program's words. Any thread,
    // without the interpreter lock.
    [[nodiscard]] Recording read() const;

    // The same with the lock. Raises OSError and ValueError.
    [[nodiscard]] Recording load() const;

private:
    void hold(const pybind11::bytes& content);

    std::string _file;
    pybind11::object _content;              // keeps the bytes
    std::optional<std::string_view> _bytes; // none: those in the file
};

} // namespace VeltoTouch::Python
