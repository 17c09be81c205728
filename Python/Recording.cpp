#include "Python/Recording.h"

#include "Plugin/Recording/ContainerWriter.h"
#include "Plugin/Reports/InputReport.h"
#include "Python/Columns.h"
#include "Python/Files.h"
#include "Python/Images.h"
#include "Python/Source.h"
#include "Velto/Analysis/Counted.h"
#include "Velto/Analysis/Label.h"
#include "Velto/Files/Writing.h"

#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Python {
namespace {

namespace py = pybind11;

std::string contentOf(const Recording& recording) {
    const py::gil_scoped_release others;
    return writeContainer(recording.frames());
}

py::object fileOf(const Recording& recording) {
    return recording.file().empty() ? py::none() : textOf(recording.file());
}

std::string reprOf(const Recording& recording) {
    std::size_t images = 0;
    for (const Frame& frame : recording.frames())
        images += InputReport::Image::parse(frame.report.data(), frame.report.size()) ? 1U : 0U;
    const auto name = recording.file().empty() ? "" : " " + py::repr(fileOf(recording)).cast<std::string>();
    return fmt::format("<velto.Recording{}: {:.3f} s, {}, {}>", name, static_cast<double>(recording.durationNs()) / 1e9,
                       Analysis::counted(images, "image"),
                       Analysis::counted(Analysis::labelsOf(recording.frames()).size(), "label"));
}

constexpr const char* kClass =
    R"(A recording of the surface, of any version: what entered its recognizer. It never changes.

    Recording("gestures.json")      a file: str or os.PathLike
    Recording(content)              the bytes of one

Raises OSError for a file that cannot be read; ValueError for content that is no recording, in the program's words:
FILE: MESSAGE (place), with "-" for the file of bytes.
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
Raises TypeError for what is no array, ValueError for another shape, a field that is missing or a number that its field
cannot hold.)";

} // namespace

Recording::Recording(PipelineRecording recording, std::string file)
    : _recording(std::move(recording)), _file(std::move(file)) {
    _recording.sortFrames();
}

void bindRecording(py::module_& module) {
    registerImages();
    registerColumns();
    py::class_<Recording> type(module, "Recording", kClass);
    type.attr("__module__") = "velto"; // where its users find it
    type.def(py::init([](const py::object& source) { return Source(source).load(); }), py::arg("source"))
        .def_static("from_images", &recordingOf, py::arg("images"), kFromImages)
        .def(
            "save",
            [](const Recording& recording, const py::object& target) {
                const std::string path = pathOf(target);
                withFile(path, [&] { Files::writeFile(path, writeContainer(recording.frames())); });
            },
            py::arg("path"),
            "Writes the recording, version 2. The file appears whole or not at all. Raises OSError if it cannot be "
            "written.")
        .def(
            "to_bytes", [](const Recording& recording) { return py::bytes(contentOf(recording)); },
            "What `save` writes.")
        .def_property_readonly(
            "file", [](const Recording& recording) { return fileOf(recording); },
            "The path as it was given. None without one; lines and messages then say \"-\".")
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
            [](const py::tuple& state) { return Source(py::bytes(state[1]), state[0].cast<std::string>()).load(); }));
}

} // namespace VeltoTouch::Python
