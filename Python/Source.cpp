#include "Python/Source.h"

#include "Plugin/Recording/Damage.h"
#include "Python/Files.h"
#include "Velto/Files/Reading.h"

#include <new>
#include <stdexcept>

namespace VeltoTouch::Python {

namespace py = pybind11;

namespace {

Ref<Data> contentOf(const std::string& path) {
    const FileDescriptor file = Files::openToRead(path);
    return Files::readAll(file.get(), Files::expectedSizeOf(file));
}

Ref<Data> copyOf(std::string_view bytes) {
    Files::requireReadable(bytes.size());
    return makeRef<Data>(std::string(bytes));
}

PipelineRecording recordingIn(const Ref<Data>& container) {
    try {
        return PipelineRecording(container.get());
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw std::invalid_argument(placedMessageOf(error));
    }
}

} // namespace

Source::Source(const py::object& source) {
    if (py::isinstance<py::bytes>(source))
        hold(py::reinterpret_borrow<py::bytes>(source));
    else
        _file = pathOf(source);
}

void Source::hold(const py::bytes& content) {
    _content = content;
    _bytes = content;
}

Recording Source::read() const { return {recordingIn(_bytes ? copyOf(*_bytes) : contentOf(_file)), _file}; }

Recording Source::load() const {
    return withFile(name(), [this] { return read(); });
}

} // namespace VeltoTouch::Python
