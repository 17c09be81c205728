#include "Platform/FileDescriptor.h"
#include "Velto/Commands/Examination.h"
#include "Velto/Options/Devices.h"
#include "Velto/Surface/NodeRights.h"
#include "Velto/Surface/PluggedIn.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <tuple>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

using enum Finding::Verdict;
constexpr const char* kNodePrefix = "hidraw"; // of what is served from a node
constexpr const char* kFirst = "surface";     // that is plugged in, as other commands take it

std::vector<HidrawNode> surfaces() {
    try {
        return Surface::findSurfaces();
    } catch (const std::runtime_error&) {
        return {};
    }
}

Finding described(const HidrawNode& node, std::size_t count) {
    std::string text = node.path;
    for (const std::string& part : {node.product, node.serialNumber, node.bus})
        text += part.empty() ? "" : ", " + part;
    return {.verdict = Yes, .text = count == 1 ? text : fmt::format("{} (the first of {})", text, count)};
}

Finding missing(const std::string& device) {
    const char* const what = ::access(device.c_str(), F_OK) == 0 ? "no touch surface" : "not there";
    return {.verdict = No,
            .text = fmt::format("{} is {}", device, what),
            .advice = "velto devices lists the surfaces; plug it in if it is missing"};
}

// Whether velto serve takes it.
bool mayBeServed(const std::string& device) {
    try {
        std::ignore = parseDevice(device);
        return formOf(device)->whyNotServed.empty();
    } catch (const std::invalid_argument&) {
        return false;
    }
}

Finding noRight(const std::string& node) {
    if (::access(node.c_str(), F_OK) != 0)
        return missing(node);
    const auto [text, advice] = Surface::missingRight(node);
    return {.verdict = No, .text = text, .advice = advice};
}

} // namespace

bool Examination::isServed() const { return std::ranges::find(_served, Bus::elementOf(_device)) != _served.end(); }

// That which is named, or the first that is plugged in, or else the first made-up one that is served.
Finding Examination::surface() {
    try {
        _served = Bus::servedOn(_options.served.bus);
    } catch (const std::exception& error) {
        _busFailure = error.what();
    }
    const bool isFirstWanted = _options.served.device == kFirst;
    if (!isFirstWanted)
        _device = (_options.served.device.starts_with(kNodePrefix) ? "/dev/" : "") + _options.served.device;
    const std::vector<HidrawNode> nodes = surfaces();
    const auto madeUp =
        std::ranges::find_if_not(_served, [](const std::string& element) { return element.starts_with(kNodePrefix); });
    if (_device.empty() && !isFirstWanted && nodes.empty() && madeUp != _served.end())
        _device = *madeUp;
    if (!_device.empty() && !hasNode())
        return isServed() || mayBeServed(_device) || !_busFailure.empty() ? Finding{.verdict = Yes, .text = _device}
                                                                          : missing(_device);
    if (_device.empty() && !nodes.empty())
        _device = nodes.front().path;
    if (_device.empty())
        return {.verdict = No,
                .text = "no surface is plugged in",
                .advice = "plug it in; velto devices --watch shows it come, sudo dmesg what the kernel says"};
    const auto found = std::ranges::find(nodes, _device, &HidrawNode::path);
    return found == nodes.end() ? missing(_device)
                                : described(*found, isFirstWanted || _options.served.device.empty() ? nodes.size() : 1);
}

// Who uses the keys needs no right to the node; the service does.
Finding Examination::node() const {
    if (!hasNode())
        return {.verdict = Unasked, .text = "no node"};
    const FileDescriptor node(::open(_device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    const int error = errno;
    if (node.isOpen())
        return {.verdict = Yes, .text = "may be opened"};
    if (isServed())
        return {.verdict = Yes, .text = "opened by its service"};
    if (error == EACCES || error == EPERM)
        return noRight(_device);
    return {.verdict = No,
            .text = fmt::format("{} cannot be opened: {}", _device, std::generic_category().message(error)),
            .advice = "unplug the surface and plug it in again; sudo dmesg shows what the kernel says"};
}

} // namespace VeltoTouch::Velto
