#include "Platform/Linux/HidrawDevice.h"

#include "Platform/Clock.h"
#include "Platform/Linux/HidrawProperties.h"
#include "Platform/Linux/ReportDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

constexpr std::size_t kMostRoom = 4096; // bytes; with more, some of the kernel's drivers refuse a request

IOReturn statusOf(int error) noexcept {
    switch (error) {
    case ENOENT:
    case ENXIO:
    case ENODEV:
        return kIOReturnNoDevice;
    case EACCES:
    case EPERM:
        return kIOReturnNotPermitted;
    case EBUSY:
        return kIOReturnBusy;
    case ENOTTY:
        return kIOReturnUnsupported; // a kernel that does not know the request
    default:
        return kIOReturnError;
    }
}

FileDescriptor openNode(const std::string& path, int mode) noexcept {
    return FileDescriptor(::open(path.c_str(), mode | O_NONBLOCK | O_CLOEXEC));
}

Ref<Dictionary> propertiesOf(const std::string& path) {
    const FileDescriptor node = openNode(path, O_RDONLY);
    if (!node.isOpen())
        throw std::system_error(errno, std::generic_category());
    return readHidrawProperties(node.get());
}

// Returns the ioctl that requests a report of a type into a buffer of this size.
std::optional<unsigned long> requestFor(IOHIDReportType type, std::size_t bytes) noexcept {
    const std::size_t room = std::min(bytes, kMostRoom);
    if (type == kIOHIDReportTypeFeature)
        return HIDIOCGFEATURE(room);
#ifdef HIDIOCGINPUT
    if (type == kIOHIDReportTypeInput)
        return HIDIOCGINPUT(room);
#endif
    return std::nullopt;
}

} // namespace

HidrawDevice::HidrawDevice(std::string path) : _path(std::move(path)), _properties(propertiesOf(_path)) {}

HidrawDevice::Node HidrawDevice::node() {
    const MutexLock guard(_lock);
    return _node;
}

void HidrawDevice::setNode(Node node) {
    const MutexLock guard(_lock);
    _node.swap(node); // the old one is closed without the lock
}

IOReturn HidrawDevice::open(IOOptionBits /*options*/) {
    if (_hasGone)
        return kIOReturnNoDevice;
    FileDescriptor opened = openNode(_path, O_RDWR);
    if (!opened.isOpen())
        return statusOf(errno);
    try {
        if (!CFEqual(readHidrawProperties(opened.get()).get(), _properties.get()))
            return kIOReturnNoDevice; // the name belongs to another device now
    } catch (const std::system_error& error) {
        return statusOf(error.code().value());
    }
    setNode(std::make_shared<const FileDescriptor>(std::move(opened)));
    return kIOReturnSuccess;
}

void HidrawDevice::close(IOOptionBits /*options*/) { setNode(nullptr); }

RunLoopSource HidrawDevice::startReports(RunLoop& loop, std::string_view mode, InputReportSink& sink) {
    if (_hasGone)
        return {};
    const Node opened = node();
    if (!opened)
        throw std::system_error(ENOTCONN, std::generic_category(), _path);
    return loop.addDescriptor(
        mode, opened->get(), [this, opened, &sink] { readReport(opened->get(), sink); }, [this] { noteRemoval(); });
}

// A read returns one report, cut to the buffer.
void HidrawDevice::readReport(int node, InputReportSink& sink) {
    std::span<std::uint8_t> buffer = sink.buffer();
    std::uint8_t nobodysRoom = 0; // a read of length 0 would not consume the report
    if (buffer.empty())
        buffer = {&nobodysRoom, 1};
    const ssize_t length = ::read(node, buffer.data(), buffer.size());
    if (length >= 0)
        sink.deliver(static_cast<std::size_t>(length), mach_absolute_time());
    else if (errno != EAGAIN && errno != EINTR)
        noteRemoval(); // a removed node; the loop removes the source because it has hung up
}

void HidrawDevice::noteRemoval() {
    if (!_hasGone.exchange(true))
        removalHandler();
}

IOReturn HidrawDevice::getReport(IOHIDReportType type, std::uint32_t reportID, std::span<std::uint8_t> buffer,
                                 std::size_t& length) {
    length = 0;
    const auto request = requestFor(type, buffer.size());
    if (!request || reportID > ReportDescriptor::kHighestReportID)
        return kIOReturnUnsupported;
    if (_hasGone)
        return kIOReturnNoDevice;
    const Node opened = node();
    if (!opened)
        return kIOReturnNotOpen;
    if (buffer.empty())
        return kIOReturnError;
    int result = 0;
    do {
        buffer.front() = static_cast<std::uint8_t>(reportID);
        result = ::ioctl(opened->get(), *request, buffer.data());
    } while (result < 0 && errno == EINTR);
    if (result < 0)
        return statusOf(errno);
    length = static_cast<std::size_t>(result);
    return kIOReturnSuccess;
}

} // namespace VeltoTouch
