#include "Plugin/Shared/KeyDomain.h"

#include "Plugin/Shared/Keys.h"

namespace VeltoTouch::Util {

bool stripDomainFromKey(std::string& key, std::string_view domain) noexcept {
    const auto rest = Keys::below(domain, key);
    if (rest)
        key.erase(0, key.size() - rest->size());
    return rest.has_value();
}

} // namespace VeltoTouch::Util
