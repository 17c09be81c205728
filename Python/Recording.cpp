#include "Python/Recording.h"

#include "Plugin/Recording/ContainerWriter.h"
#include "Plugin/Recording/Damage.h"
#include "Plugin/Reports/InputReport.h"
#include "Python/Columns.h"
#include "Python/File.h"
#include "Python/Images.h"
#include "Velto/Analysis/Label.h"

#include <cerrno>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Python {
namespace {

namespace py = pybind11;

// Works without the interpreter lock. Raises OSError with the file's name for what the system refuses.
template <class Work>
auto withFile(const std::string& path, const Work& work) {
    try {
        const py::gil_scoped_release others;
        return work();
    } catch (const std::system_error& error) {
        errno = error.code().value();
        PyErr_SetFromErrnoWithFilename(PyExc_OSError, path.c_str());
        throw py::error_already_set();
    }
}

// Throws std::invalid_argument, which Python sees as ValueError, with the program's words.
PipelineRecording recordingIn(const Ref<Data>& container) {
    try {
        return PipelineRecording(container.get());
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw std::invalid_argument(placedMessageOf(error));
    }
}

// A path's bytes, and back: names of files need not be text.
std::string pathOf(const py::object& path) {
    std::string bytes = py::bytes(py::module_::import("os").attr("fsencode")(path));
    if (bytes.find('\0') != std::string::npos)
        throw py::value_error("embedded null byte");
    return bytes;
}
py::object textOf(const std::string& path) {
    return path.empty() ? py::object(py::none()) : py::module_::import("os").attr("fsdecode")(py::bytes(path));
}

std::string contentOf(const Recording& recording) {
    const py::gil_scoped_release others;
    return writeContainer(recording.frames());
}

std::string reprOf(const Recording& recording) {
    std::uint64_t images = 0;
    for (const Frame& frame : recording.frames())
        images += InputReport::Image::parse(frame.report.data(), frame.report.size()) ? 1U : 0U;
    const auto name = recording.file().empty() ? "" : " " + py::repr(textOf(recording.file())).cast<std::string>();
    return fmt::format("<velto.Recording{}: {:.3f} s, {} images, {} labels>", name,
                       static_cast<double>(recording.durationNs()) / 1e9, images,
                       Analysis::labelsOf(recording.frames()).size());
}

constexpr const char* kClass =
    R"(A recording of the surface, of any version: what entered its recognizer. It never changes.

    Recording("gestures.json")      a file: str or os.PathLike
    Recording(content)              the bytes of one

Raises OSError for a file that cannot be read, ValueError for content that is no recording; the message says where.
Times `ns` count nanoseconds from the recording's first frame. Each access of a column builds a new array.)";

constexpr const char* kImages = R"(The images, a row each: structured array, shape (images,).

    ns         u8         ns
    frame      u4         the device's scan counter, wraps
    timeMs     u4         ms of the device's clock, wraps
    reserved   u1 (4,)    carried unchanged
    padRaw     u2 (15,)   counts, pads A to O; only shown
    padSignal  i2 (15,)   counts, pads A to O; what recognition reads)";

constexpr const char* kReports = R"(All input reports, images included, a row each: structured array, shape (reports,).

    ns      u8   ns
    id      u1   report ID: 1 image, 2 firmware event; 0 for an empty report
    length  u8   bytes, ID included
    offset  u8   where it begins in `report_bytes`)";

constexpr const char* kLabels = R"(What was meant by contacts, a row each: structured array, shape (labels,).

    index                  u8    from 1
    gesture                str   tap, hold, slide, palm, brush or another word
    region, endRegion      str   PlayPause, VolumeUp, VolumeDown, None, or empty
    startNs, endNs         u8    ns)";

constexpr const char* kSettings = R"(Writes of settings, a row each: structured array, shape (writes,).

    ns     u8       ns
    key    str      full property key
    value  object   what JSON can say, None for no value)";

constexpr const char* kAccelerometer = R"(Samples around gestures, a row each: structured array, shape (samples,).

    ns        u8   ns
    X, Y, Z   f4   as the accelerometer gives them; NaN for what is no number)";

constexpr const char* kFromImages = R"(Makes a recording of images.

images: structured array, shape (n,), with the fields of `Recording.images`; `padRaw` and `reserved` may be absent.
Raises ValueError for another shape, a field that is missing or a number that its field cannot hold.)";

} // namespace

Recording::Recording(PipelineRecording recording, std::string file)
    : _recording(std::move(recording)), _file(std::move(file)) {
    _recording.sortFrames();
}

Recording Recording::load(const py::object& source) {
    if (py::isinstance<py::bytes>(source))
        return loadBytes(source, "");
    const std::string path = pathOf(source);
    return withFile(path, [&path] { return Recording(recordingIn(readFile(path)), path); });
}

Recording Recording::loadBytes(const py::bytes& content, std::string file) {
    const std::string_view bytes = content;
    const py::gil_scoped_release others;
    requireReadable(bytes.size());
    return {recordingIn(makeRef<Data>(std::string(bytes))), std::move(file)};
}

void bindRecording(py::module_& module) {
    registerImages();
    registerColumns();
    py::class_<Recording> type(module, "Recording", kClass);
    type.attr("__module__") = "velto"; // where its users find it
    type.def(py::init(&Recording::load), py::arg("source"))
        .def_static("from_images", &recordingOf, py::arg("images"), kFromImages)
        .def(
            "save",
            [](const Recording& recording, const py::object& target) {
                const std::string path = pathOf(target);
                withFile(path, [&] { writeFile(path, writeContainer(recording.frames())); });
            },
            py::arg("path"),
            "Writes the recording, version 2. The file appears whole or not at all. Raises OSError if it cannot be "
            "written.")
        .def(
            "to_bytes", [](const Recording& recording) { return py::bytes(contentOf(recording)); },
            "What `save` writes.")
        .def_property_readonly(
            "file", [](const Recording& recording) { return textOf(recording.file()); },
            "The path as it was given, None without one.")
        .def_property_readonly("duration_ns", &Recording::durationNs, "ns from the first frame to the last.")
        .def_property_readonly("images", &imagesOf, kImages)
        .def_property_readonly("reports", &reportsOf, kReports)
        .def_property_readonly("report_bytes", &reportBytesOf,
                               "The bytes of all reports, one behind the other: u1, shape (bytes,).")
        .def_property_readonly("labels", &labelsOf, kLabels)
        .def_property_readonly("settings", &writesOf, kSettings)
        .def_property_readonly("accelerometer", &accelerometerOf, kAccelerometer)
        .def("__repr__", &reprOf)
        .def(py::pickle(
            [](const Recording& recording) {
                return py::make_tuple(py::bytes(recording.file()), py::bytes(contentOf(recording)));
            },
            [](const py::tuple& state) { return Recording::loadBytes(state[1], state[0].cast<std::string>()); }));
}

} // namespace VeltoTouch::Python
