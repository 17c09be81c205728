#pragma once

#include <string>
#include <string_view>

namespace VeltoTouch::Util {

// Removes `domain` and the dot behind it from the front of `key`, and returns true. Returns false and leaves `key` as
// it is if it does not begin with them. The rest may be empty; case counts. Any thread.
bool stripDomainFromKey(std::string& key, std::string_view domain) noexcept;

} // namespace VeltoTouch::Util
