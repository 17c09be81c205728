#include "Platform/Object.h"

namespace VeltoTouch {

CFIndex CFRetainAndCount(CFTypeRef object) noexcept {
    return object == nullptr ? 0 : object->_references.fetch_add(1, std::memory_order_relaxed) + 1;
}

CFIndex CFReleaseAndCount(CFTypeRef object) noexcept {
    if (object == nullptr)
        return 0;
    const CFIndex count = object->_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (count == 0)
        delete object;
    return count;
}

CFTypeRef CFRetain(CFTypeRef object) noexcept {
    CFRetainAndCount(object);
    return object;
}

void CFRelease(CFTypeRef object) noexcept { CFReleaseAndCount(object); }

CFIndex CFGetRetainCount(CFTypeRef object) noexcept {
    return object == nullptr ? 0 : object->_references.load(std::memory_order_relaxed);
}

bool CFEqual(CFTypeRef a, CFTypeRef b) noexcept {
    if (a == nullptr || b == nullptr)
        return a == b;
    return a == b || a->isEqual(*b);
}

} // namespace VeltoTouch
