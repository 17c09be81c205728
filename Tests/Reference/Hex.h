#pragma once
#include "Tests/Reference/Reports.h"
#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
namespace VeltoTouch::Reference {
inline std::string rightAligned(int number, int width) {
    const std::string text = std::to_string(number);
    return std::string(std::size_t(std::max(width - int(text.size()), 0)), ' ') + text;
}
inline Bytes bytesFromHexString(const std::string& text) {
    std::istringstream stream(text);
    Bytes bytes;
    std::uint16_t number = 0;
    while (stream >> std::hex >> number) {
        if (number >= 0x100)
            throw std::invalid_argument("invalid hex string");
        bytes.push_back(std::uint8_t(number));
    }
    return bytes;
}
inline std::string hexStringFromBytes(const Bytes& bytes) {
    const char* const digits = "0123456789abcdef";
    std::string text;
    for (std::uint8_t byte : bytes)
        text += {digits[byte / 16], digits[byte % 16], ' '};
    return text;
}
// Removes the domain and its dot from the front of the key; false leaves the key as it is.
inline bool stripDomainFromKey(std::string& key, const std::string& domain) {
    const std::string prefix = domain + ".";
    if (key.compare(0, prefix.size(), prefix) != 0)
        return false;
    key.erase(0, prefix.size());
    return true;
}
// The picture of an image: its raw values, or else its signals, where the pads lie.
inline std::string stringFromImage(const Image& image, bool raw) {
    const std::string layout = "           HHHH      GGGG           \n"
                               "                IIII                \n"
                               "     BBBB                  AAAA     \n"
                               "         JJJJ          JJJJ         \n"
                               "     FFFF                  EEEE     \n"
                               " AAAA                          BBBB \n"
                               "                KKKK                \n"
                               " DDDD                          CCCC \n"
                               "     EEEE                  FFFF     \n"
                               "         LLLL          LLLL         \n"
                               "     CCCC                  DDDD     \n"
                               "                MMMM                \n"
                               "           NNNN      OOOO           \n";
    std::string picture;
    int run = 0;
    std::size_t pad = 0;
    for (char c : layout) {
        if (c >= 'A' && c <= 'O') {
            ++run;
            pad = std::size_t(c - 'A');
        } else if (run > 0) { // the blank that ends a run gives way to the field
            const int value = raw ? int(image.padRaw.at(pad)) : int(image.padSignal.at(pad));
            const std::string text = rightAligned(value, run / 2);
            picture += text + std::string(std::size_t(std::abs(run - int(text.size()))), ' ');
            run = 0;
        } else {
            picture += c;
        }
    }
    const std::string frame = std::to_string(image.frameNumber), time = std::to_string(image.timestampMs);
    return "# Image frame " + frame + "    time " + time + " ms\n\n" + picture;
}
} // namespace VeltoTouch::Reference
