#include "Python/Images.h"

#include "Plugin/Reports/InputReport.h"
#include "Python/Arguments.h"
#include "Python/Arrays.h"

#include <array>
#include <cstring>
#include <string>
#include <utility>

namespace VeltoTouch::Python {
namespace {

using InputReport::Image;

struct ImageRow {
    std::uint64_t ns;
    std::uint32_t frame;
    std::uint32_t timeMs;
    std::array<std::uint8_t, 4> reserved;
    std::array<std::uint16_t, kPadCount> padRaw;
    std::array<std::int16_t, kPadCount> padSignal;
};

ImageRow rowOf(const Image& image, std::uint64_t ns) noexcept {
    return {.ns = ns,
            .frame = image.frameNumber,
            .timeMs = image.timestampMs,
            .reserved = {image.reserved0, image.reserved1, image.reserved2, image.reserved3},
            .padRaw = image.padRaw,
            .padSignal = image.padSignal};
}

std::array<std::uint8_t, InputReport::kImageReportLength> reportOf(const ImageRow& row) noexcept {
    const Image image{.frameNumber = row.frame,
                      .timestampMs = row.timeMs,
                      .reserved0 = row.reserved[0],
                      .reserved1 = row.reserved[1],
                      .reserved2 = row.reserved[2],
                      .reserved3 = row.reserved[3],
                      .padRaw = row.padRaw,
                      .padSignal = row.padSignal};
    std::array<std::uint8_t, InputReport::kImageReportLength> report{Image::kReportID};
    std::memcpy(report.data() + 1, &image, sizeof(image));
    return report;
}

bool mayBeAbsent(const std::string& field) { return field == "padRaw" || field == "reserved"; }

// The images with our fields in our types.
py::array_t<ImageRow> rowsOf(const py::object& given) {
    if (!py::isinstance<py::array>(given))
        refuseType("images", "a structured array", given);
    const auto images = py::reinterpret_borrow<py::array>(given);
    if (images.ndim() != 1 || images.dtype().attr("names").is_none())
        throw py::value_error("a structured array of one dimension is wanted, with the fields of Recording.images");
    const py::module_ numpy = py::module_::import("numpy");
    py::object rows = numpy.attr("zeros")(images.size(), py::dtype::of<ImageRow>());
    for (const py::handle name : rows.attr("dtype").attr("names")) {
        const auto field = name.cast<std::string>();
        if (!images.dtype().attr("names").contains(name)) {
            if (mayBeAbsent(field))
                continue;
            throw py::value_error("images: no field " + field);
        }
        const py::object column = images[name];
        rows[name] = column;
        if (!numpy.attr("array_equal")(rows[name], column).cast<bool>())
            throw py::value_error("images: " + field + " is out of range");
    }
    return rows;
}

} // namespace

void registerImages() { PYBIND11_NUMPY_DTYPE(ImageRow, ns, frame, timeMs, reserved, padRaw, padSignal); }

py::array imagesOf(const Recording& recording) {
    std::vector<ImageRow> rows;
    {
        const py::gil_scoped_release others;
        rows.reserve(recording.frames().size());
        for (const Frame& frame : recording.frames()) {
            if (const auto image = Image::parse(frame.report.data(), frame.report.size()))
                rows.push_back(rowOf(*image, recording.nsOf(frame)));
        }
    }
    return arrayOf(std::move(rows));
}

Recording recordingOf(const py::object& images) {
    const py::array_t<ImageRow> rows = rowsOf(images);
    const auto each = rows.unchecked<1>();
    PipelineRecording recording;
    for (py::ssize_t i = 0; i < each.shape(0); ++i) {
        const auto report = reportOf(each(i));
        recording.appendFrame({.type = Frame::Type::InputReport,
                               .timestampNs = each(i).ns,
                               .key = {},
                               .value = nullptr,
                               .report = {report.begin(), report.end()}});
    }
    return {std::move(recording), ""};
}

} // namespace VeltoTouch::Python
