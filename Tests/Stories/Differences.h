#pragma once

#include "Plugin/Algs/HandStats.h"
#include "Plugin/Algs/VirtualImage.h"
#include "Plugin/Recording/Frame.h"
#include "Tests/Reference/Container.h"

#include <list>
#include <string>

// The first field in which something of the system's differs from the reference's, by name. Floats are compared by
// their bits, NaN as equal.

namespace VeltoTouch::Tests {

// Null if there is none.
[[nodiscard]] const char* differenceOfPixel(const Pixel& ours, const Reference::Pixel& theirs);
[[nodiscard]] const char* differenceOfGroup(const VirtualImage& ours, const Reference::VirtualImage& theirs,
                                            std::size_t group);
[[nodiscard]] const char* differenceOfHand(const HandStats& ours, const Reference::HandStats& theirs);
// `value`: what stands in place of the value in our call.
[[nodiscard]] const char* differenceOfCall(const Reference::Call& ours, const Ref<Value>& value,
                                           const Reference::Call& theirs);

// Empty if there is none.
[[nodiscard]] std::string differenceOfFrames(const std::list<Frame>& ours, const std::list<Reference::Frame>& theirs);

} // namespace VeltoTouch::Tests
