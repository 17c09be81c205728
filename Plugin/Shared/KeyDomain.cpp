#include "Plugin/Shared/KeyDomain.h"

namespace VeltoTouch::Util {

bool stripDomainFromKey(std::string& key, std::string_view domain) noexcept {
    const std::size_t prefixLength = domain.size() + 1;
    if (key.size() < prefixLength || key[domain.size()] != '.' || !key.starts_with(domain))
        return false;
    key.erase(0, prefixLength);
    return true;
}

} // namespace VeltoTouch::Util
