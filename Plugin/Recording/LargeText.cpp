#include "Plugin/Recording/LargeText.h"

#include "Platform/Value.h"

#include <cstdint>

#include <sys/mman.h>

namespace VeltoTouch {

std::string roomForText(std::size_t size) {
    std::string room;
    room.reserve(size + Data::kPadding);
#ifdef MADV_HUGEPAGE
    static constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20U;
    const auto start = reinterpret_cast<std::uintptr_t>(room.data());
    const std::uintptr_t end = start + room.capacity();
    const std::uintptr_t firstPage = (start + kHugePage - 1) / kHugePage * kHugePage;
    if (firstPage < end)
        ::madvise(reinterpret_cast<void*>(firstPage), end - firstPage, MADV_HUGEPAGE); // a hint; it may be refused
#endif
    return room;
}

} // namespace VeltoTouch
