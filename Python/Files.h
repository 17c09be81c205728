#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

#include <pybind11/pybind11.h>

// Names of files, and what is wrong with them and in them.

namespace VeltoTouch::Python {

// A path's bytes, and back to a str: names of files need not be text. Raises TypeError for what is no path.
[[nodiscard]] std::string pathOf(const pybind11::object& path);
[[nodiscard]] pybind11::object textOf(const std::string& path);

// Raises OSError, of the kind that belongs to the error's number.
[[noreturn]] void raiseOSError(const std::string& file, int number, const std::string& message);

// Raises ValueError("FILE: MESSAGE").
[[noreturn]] void raiseValueError(const std::string& file, const std::string& message);

// Works without the interpreter lock. std::invalid_argument becomes a ValueError, what the system or the writer of
// files refuses an OSError, both with the file's name.
template <class Work>
auto withFile(const std::string& file, const Work& work) {
    try {
        const pybind11::gil_scoped_release others;
        return work();
    } catch (const std::invalid_argument& error) {
        raiseValueError(file, error.what());
    } catch (const std::system_error& error) {
        raiseOSError(file, error.code().value(), error.code().message());
    } catch (const std::runtime_error& error) {
        raiseOSError(file, EPERM, error.what());
    }
}

} // namespace VeltoTouch::Python
