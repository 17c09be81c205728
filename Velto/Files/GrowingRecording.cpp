#include "Velto/Files/GrowingRecording.h"

#include "Plugin/Recording/ContainerWriter.h"
#include "Velto/Files/SystemCalls.h"
#include "Velto/Files/Writing.h"

#include <string_view>
#include <tuple>

#include <unistd.h>

namespace VeltoTouch::Files {
namespace {

// What a write that fails loses is no more than this.
constexpr std::size_t kMostWaiting = 4096;

void writeAt(int file, std::uint64_t place, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::pwrite(file, text.data(), text.size(), static_cast<off_t>(place));
        if (written < 0 && errno != EINTR)
            throwSystemError();
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
            place += static_cast<std::uint64_t>(written);
        }
    }
}

} // namespace

GrowingRecording::GrowingRecording(const std::string& path, Old old)
    : _file((old == Old::Keep ? beginNewFile : beginFile)(path,
                                                          std::string(kContainerBeginning).append(kContainerEnding))),
      _framesEnd(kContainerBeginning.size()) {}

void GrowingRecording::append(const Frame& frame) {
    appendFrame(_waiting, frame);
    if (_waiting.size() >= kMostWaiting)
        write();
}

void GrowingRecording::write() {
    if (_waiting.empty())
        return;
    _waiting.pop_back(); // the comma
    std::string text = _framesEnd == kContainerBeginning.size() ? "" : ",";
    text += _waiting;
    _waiting.clear();
    const std::uint64_t end = _framesEnd + text.size();
    text += kContainerEnding;
    try {
        writeAt(_file.get(), _framesEnd, text);
    } catch (const std::system_error&) { // a full disk: the ending has its old place, and nothing stands behind it
        writeAt(_file.get(), _framesEnd, kContainerEnding);
        std::ignore = ::ftruncate(_file.get(), static_cast<off_t>(_framesEnd + kContainerEnding.size()));
        throw;
    }
    _framesEnd = end;
}

void GrowingRecording::sync() { check(::fdatasync(_file.get())); }

std::uint64_t GrowingRecording::size() const noexcept { return _framesEnd + _waiting.size() + kContainerEnding.size(); }

} // namespace VeltoTouch::Files
