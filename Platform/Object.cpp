#include "Platform/Object.h"

namespace VeltoTouch {

CFTypeRef CFRetain(CFTypeRef object) noexcept {
    if (object != nullptr)
        object->_references.fetch_add(1, std::memory_order_relaxed);
    return object;
}

void CFRelease(CFTypeRef object) noexcept {
    // The count is dropped and read in one step: after it, the object may belong to nobody.
    if (object != nullptr && object->_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete object;
}

CFIndex CFGetRetainCount(CFTypeRef object) noexcept {
    return object == nullptr ? 0 : object->_references.load(std::memory_order_relaxed);
}

bool CFEqual(CFTypeRef a, CFTypeRef b) noexcept {
    if (a == nullptr || b == nullptr)
        return a == b;
    return a == b || a->isEqual(*b);
}

} // namespace VeltoTouch
