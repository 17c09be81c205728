#pragma once
#include <cstdint>
#include <list>
#include <string>
#include <vector>
#include "Plugin/Recording/Frame.h"
namespace VeltoTouch::Analysis {
struct Label {
    std::size_t index = 0; // from 1
    std::string gesture;
    std::string region;
    std::string endRegion;
    std::uint64_t startNs = 0;
    std::uint64_t endNs = 0;
};
} // namespace VeltoTouch::Analysis
