#include "Python/Columns.h"

#include "Platform/JSON.h"
#include "Plugin/Recording/AccelMetadata.h"
#include "Plugin/Shared/Keys.h"
#include "Python/Arrays.h"
#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Members.h"

#include <cmath>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace VeltoTouch::Python {
namespace {

struct ReportRow {
    std::uint64_t ns;
    std::uint64_t length;
    std::uint64_t offset;
    std::uint8_t id;
};

struct SampleRow {
    std::uint64_t ns;
    float X;
    float Y;
    float Z;
};

struct Field {
    const char* name;
    const char* type;
};

// A structured array of tuples. Texts of any length are objects.
py::array arrayOfTuples(const py::list& rows, std::initializer_list<Field> fields) {
    py::list types;
    for (const Field& field : fields)
        types.append(py::make_tuple(field.name, field.type));
    return py::module_::import("numpy").attr("array")(rows, types);
}

// What is no UTF-8 becomes U+FFFD, as in every line.
py::str strOf(std::string_view text) {
    return py::reinterpret_steal<py::str>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "replace"));
}

std::optional<SampleRow> sampleIn(const Frame& frame, std::uint64_t ns) {
    const auto* axes = as<Dictionary>(frame.value);
    if (frame.type != Frame::Type::Metadata || frame.key != AccelMetadata::kKey || axes == nullptr)
        return std::nullopt;
    const auto axis = [axes](const char* name) {
        return static_cast<float>(Analysis::doubleUnder(*axes, name).value_or(std::nan("")));
    };
    return SampleRow{.ns = ns, .X = axis("X"), .Y = axis("Y"), .Z = axis("Z")};
}

} // namespace

void registerColumns() {
    PYBIND11_NUMPY_DTYPE(ReportRow, ns, id, length, offset);
    PYBIND11_NUMPY_DTYPE(SampleRow, ns, X, Y, Z);
}

py::array reportsOf(const Recording& recording) {
    std::vector<ReportRow> rows;
    std::uint64_t offset = 0;
    for (const Frame& frame : recording.frames()) {
        if (frame.type != Frame::Type::InputReport)
            continue;
        rows.push_back({.ns = recording.nsOf(frame),
                        .length = frame.report.size(),
                        .offset = offset,
                        .id = frame.report.empty() ? std::uint8_t{0} : frame.report.front()});
        offset += frame.report.size();
    }
    return arrayOf(std::move(rows));
}

py::array reportBytesOf(const Recording& recording) {
    std::vector<std::uint8_t> bytes;
    for (const Frame& frame : recording.frames())
        bytes.insert(bytes.end(), frame.report.begin(), frame.report.end());
    return arrayOf(std::move(bytes));
}

py::array labelsOf(const Recording& recording) {
    py::list rows;
    for (const Analysis::Label& label : Analysis::labelsOf(recording.frames()))
        rows.append(py::make_tuple(label.index, strOf(label.gesture), strOf(label.region), strOf(label.endRegion),
                                   label.startNs, label.endNs));
    return arrayOfTuples(
        rows,
        {{"index", "u8"}, {"gesture", "O"}, {"region", "O"}, {"endRegion", "O"}, {"startNs", "u8"}, {"endNs", "u8"}});
}

py::array writesOf(const Recording& recording) {
    const py::object loads = py::module_::import("json").attr("loads");
    py::list rows;
    for (const Frame& frame : recording.frames()) {
        if (frame.type == Frame::Type::State)
            rows.append(py::make_tuple(recording.nsOf(frame), strOf(Keys::pipelineKey(frame.key)),
                                       loads(strOf(JSON::text(frame.value.get())))));
    }
    return arrayOfTuples(rows, {{"ns", "u8"}, {"key", "O"}, {"value", "O"}});
}

py::array accelerometerOf(const Recording& recording) {
    std::vector<SampleRow> rows;
    for (const Frame& frame : recording.frames()) {
        if (const auto sample = sampleIn(frame, recording.nsOf(frame)))
            rows.push_back(*sample);
    }
    return arrayOf(std::move(rows));
}

} // namespace VeltoTouch::Python
