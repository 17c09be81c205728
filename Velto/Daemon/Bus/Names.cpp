#include "Velto/Daemon/Bus/Names.h"

namespace VeltoTouch::Bus {

std::string elementOf(std::string_view device) {
    if (device.starts_with('/'))
        device.remove_prefix(device.rfind('/') + 1);
    std::string element(device.substr(0, device.find(':')));
    std::erase_if(element, [](char c) {
        const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        return !isPlain;
    });
    return element;
}

std::string nameOf(std::string_view element) { return std::string(kName) + "." + std::string(element); }

std::string pathOf(std::string_view element) { return std::string(kObjects) + "/" + std::string(element); }

} // namespace VeltoTouch::Bus
