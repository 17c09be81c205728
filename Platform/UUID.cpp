#include "Platform/UUID.h"

#include <charconv>
#include <mutex>
#include <vector>

namespace VeltoTouch {
namespace {

constexpr std::string_view kWrittenForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

} // namespace

bool UUID::isEqual(const Object& other) const noexcept {
    const auto* uuid = dynamic_cast<const UUID*>(&other);
    return uuid != nullptr && uuid->_bytes == _bytes;
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFTypeRef /*allocator*/, const CFUUIDBytes& bytes) {
    static std::mutex lock;
    static auto* const constants = new std::vector<Ref<UUID>>; // guarded by lock; never destroyed
    const std::scoped_lock guard(lock);
    for (const Ref<UUID>& constant : *constants) {
        if (constant->bytes() == bytes)
            return constant.get();
    }
    return constants->emplace_back(makeRef<UUID>(bytes)).get();
}

Ref<UUID> CFUUIDCreateFromUUIDBytes(CFTypeRef /*allocator*/, const CFUUIDBytes& bytes) { return makeRef<UUID>(bytes); }

Ref<UUID> CFUUIDCreateFromString(CFTypeRef /*allocator*/, std::string_view text) {
    if (text.size() != kWrittenForm.size())
        return nullptr;
    CFUUIDBytes bytes{};
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (kWrittenForm[i] == '-') {
            if (text[i++] != '-')
                return nullptr;
            continue;
        }
        const char* const pair = text.data() + i;
        const auto [end, error] = std::from_chars(pair, pair + 2, bytes.at(count++), 16);
        if (error != std::errc() || end != pair + 2)
            return nullptr;
        i += 2;
    }
    return makeRef<UUID>(bytes);
}

} // namespace VeltoTouch
