#include "Velto/Surface/PipedDevice.h"

#include "Platform/Clock.h"
#include "Plugin/Shared/ClockConversion.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <unistd.h>

namespace VeltoTouch::Surface {

RunLoopSource PipedDevice::startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) {
    if (_hasGone)
        return {};
    const auto read = [this, &sink] { return readSome(sink); };
    try {
        return loop.addDescriptor(
            mode, _descriptor, [read] { (void)read(); },
            [read] {
                while (read()) { // what is left, and the end
                }
            });
    } catch (const std::system_error& error) {
        if (error.code().value() != EPERM)
            throw;
    }
    // A file is always ready, and can not be waited for.
    return loop.addTimer(mode, mach_absolute_time(),
                         [read] { return read() ? std::optional(mach_absolute_time()) : std::nullopt; });
}

bool PipedDevice::readSome(InputReportSink& sink) {
    if (_hasGone)
        return false;
    std::array<std::uint8_t, 4096> bytes{};
    const ssize_t length = ::read(_descriptor, bytes.data(), bytes.size());
    if (length < 0 && (errno == EAGAIN || errno == EINTR))
        return true;
    const auto deliver = [&sink](std::optional<std::uint64_t> timeNs, std::span<const std::uint8_t> report) {
        const std::span<std::uint8_t> buffer = sink.buffer();
        std::ranges::copy(report.first(std::min(report.size(), buffer.size())), buffer.begin());
        sink.deliver(report.size(), timeNs ? Util::machTimeFromNanoseconds(*timeNs) : mach_absolute_time());
    };
    try {
        if (length < 0)
            throw std::invalid_argument(std::generic_category().message(errno));
        if (length > 0) {
            _stream.add(std::span(bytes).first(static_cast<std::size_t>(length)), deliver);
            return true;
        }
        _stream.finish(deliver);
        end("");
    } catch (const std::invalid_argument& error) {
        end(error.what());
    }
    return false;
}

void PipedDevice::end(const std::string& failure) {
    {
        const MutexLock guard(_lock);
        _failure = failure;
    }
    _hasGone = true;
    removalHandler();
}

std::string PipedDevice::failure() {
    const MutexLock guard(_lock);
    return _failure;
}

} // namespace VeltoTouch::Surface
