#pragma once

#include <cstddef>
#include <string>

namespace VeltoTouch {

// Returns an empty string with room for `size` bytes and the padding of a `Data`, to be filled and made one without a
// copy. The kernel may back a large one with huge pages: to take a recording's memory page by page costs more than to
// write to it. Throws std::bad_alloc.
[[nodiscard]] std::string roomForText(std::size_t size);

} // namespace VeltoTouch
